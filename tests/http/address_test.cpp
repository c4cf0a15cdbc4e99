#include "zelto/http/address.h"

#include "tests/http/library_folder.h"
#include "tests/support/words.h"
#include "zelto/http/ip_address.h"

#include <string>
#include <vector>

using namespace Zelto::Utilities;
using namespace std::string_literals;
using Zelto::Testing::Catch;
using Zelto::Testing::Words;

namespace {

TEST(HttpAddress, IsTakenApartAndPutTogether) {
  const auto expect = [](const std::wstring& url, const std::string& text, const std::string& host, int port) {
    const Address address = SplitAddress(url);
    EXPECT_EQ(address.ToText(), text);
    EXPECT_EQ(address.host, host);
    EXPECT_EQ(address.port, port) << text;
  };
  expect(L"http://h", "http://h/", "h", 80);
  expect(L"HTTPS://Example.com:443/a/b?c=d#e?f/g", "https://Example.com/a/b?c=d", "Example.com", 443);
  expect(L"http://h:443/", "http://h:443/", "h", 443);
  expect(L"http://h:/x", "http://h/x", "h", 80);
  expect(L"http://h:00080?q@:/", "http://h/?q@:/", "h", 80);
  expect(L"https://h#f", "https://h/", "h", 443);
  expect(L"http://u:p@h/", "http://u:p@h/", "h", 80);
  expect(L"http://u@[::1]:8080/p", "http://u@[::1]:8080/p", "[::1]", 8080);
  expect(L"http://u s:p%40\u00E9[@h/", "http://u%20s:p%40%C3%A9%5B@h/", "h", 80);
  expect(L"http://[fe80::1%eth0]/", "http://[fe80::1%25eth0]/", "[fe80::1%25eth0]", 80);
  expect(L"http://[fe80::1%25eth0]/", "http://[fe80::1%25eth0]/", "[fe80::1%25eth0]", 80);
  expect(L"http://b\u00FCcher.de/\u20AC?\U0001F600=%e2%82", "http://b%C3%BCcher.de/%E2%82%AC?%F0%9F%98%80=%e2%82",
         "b%C3%BCcher.de", 80);
  expect(L"http://h/a b\"<>\\^`{|}%zz%4g%41%", "http://h/a%20b%22%3C%3E%5C%5E%60%7B%7C%7D%25zz%254g%41%25", "h", 80);
  expect(L"http://h/-._~!$&'()*+,;=:@/?", "http://h/-._~!$&'()*+,;=:@/?", "h", 80);
}

TEST(HttpAddress, IsRefusedWhenItIsMalformed) {
  std::vector<std::wstring> urls = Words(
      L"h/p http:/h //h/ http:// http:///p http://u@/ http://:80/ http://u:p/w@h/ http://h:0/ http://h:65536/ "
      L"http://h:4294967376/ http://h:8o/ http://h:-1/ http://h:1:2/ http://good\\@evil/ http://a@b@c/ http://h%2Fx/ "
      L"http://h%00/ http://h%/ http://::1/ http://[::1/ http://[::1]x/ http://[1.2.3.4]/ http://[h]/ http://[]/ "
      L"http://[::1%]/ http://[::1%25a/b]/ http://h/\xD800");
  for (const std::wstring& hostile : {L""s, L"http://h h/"s, L"http://h/\r\nX:1"s, L"http://h/\n"s, L"http://h/\t"s,
                                      L"http://h\0/"s, L"http://h/\0"s}) {
    urls.push_back(hostile);
  }
  for (const std::wstring& url : urls) {
    const auto thrown = Catch([&] { SplitAddress(url); });
    EXPECT_EQ(thrown.code, 12005U) << testing::PrintToString(url);
    EXPECT_EQ(thrown.text.substr(0, 13), "Invalid URL: ");
  }
  for (const wchar_t* url : {L"ftp://h/", L"file:///etc/passwd", L"httpx://h/", L" http://h/"}) {
    EXPECT_EQ(Catch([&] { SplitAddress(std::wstring_view(url)); }).code, 12006U);
  }
}

TEST(IpAddress, IsReadStrictly) {
  const auto expect = [](const char* pairs, bool inside) {
    const auto words = Words(pairs);
    for (std::size_t i = 0; i < words.size(); i += 2) {
      const auto address = ParseIpAddress(words[i]);
      ASSERT_TRUE(address) << words[i];
      EXPECT_EQ(IsInNetwork(*address, words[i + 1]), inside) << words[i] << " in " << words[i + 1];
    }
  };
  expect(
      "10.255.0.1 10.0.0.0/8 192.0.2.200 192.0.2.128/25 1.2.3.4 0.0.0.0/0 1.2.3.4 1.2.3.4 fdab::1 fd00::/8 "
      "2001:db8:7fff:: 2001:db8::/33 0:0:0:0:0:0:0:1 ::1 1.2.3.4 ::ffff:1.2.3.4",
      true);
  expect(
      "11.0.0.1 10.0.0.0/8 192.0.2.100 192.0.2.128/25 ::1 0.0.0.0/0 1.2.3.5 1.2.3.4/32 1.2.3.4 1.2.3.4/33 "
      "1.2.3.4 1.2.3.4/ fe00::1 fd00::/8 2001:db8:8000:: 2001:db8::/33 ::1 ::/129 1.2.3.4 h/8",
      false);
  for (const std::string& text :
       Words("1.2.3 1.2.3.4.5 1.2.3.256 1.2.3.04 1.2.3. 1..3.4 : ::: 1::2::3 1:2:3:4:5:6:7 1:2:3:4:5:6:7:8:9 "
             "1:2:3:4:5:6:7::8 12345:: g:: 1: :1 1.2.3.4:: ::1.2.3.4:5 1:2:3:4:5:6:7:1.2.3.4")) {
    EXPECT_FALSE(ParseIpAddress(text)) << text;
  }
  EXPECT_FALSE(ParseIpAddress(""));
}

}  // namespace
