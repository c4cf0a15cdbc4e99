#include "zelto/http/proxy_rules.h"

#include "tests/http/library_folder.h"
#include "tests/support/words.h"

#include <new>
#include <string_view>

using namespace Zelto::Utilities;
using Syntax = Zelto::Platform::SystemProxyTexts::Syntax;
using Zelto::Testing::Catch;
using Zelto::Testing::Thrown;
using Zelto::Testing::Words;

namespace {

std::string ProxyFor(const Zelto::Platform::SystemProxyTexts& texts, const std::wstring& url) {
  const SystemProxyRules rules(texts);
  const Proxy* const proxy = rules.For(SplitAddress(url));
  return proxy == nullptr ? "none"
                          : proxy->host + "|" + std::to_string(proxy->port) + "|" + proxy->user + "|" + proxy->password;
}

TEST(SystemProxy, IsReadFromTheEnvironmentAndFromTheUsersSetting) {
  const auto expect = [](Syntax syntax, const char* text, const char* for_http, const char* for_https) {
    EXPECT_EQ(ProxyFor({syntax, text, text, ""}, L"http://h/"), for_http) << text;
    EXPECT_EQ(ProxyFor({syntax, text, text, ""}, L"https://h/"), for_https) << text;
  };
  for (const auto& [text, proxy] :
       {std::pair("", "none"), std::pair("p", "p|80||"), std::pair("HTTP://p:3128/", "p|3128||"),
        std::pair("http://u%3a:p%40:w@[::1]:8080", "[::1]|8080|u:|p@:w"), std::pair("https://p", "https://p|443||"),
        std::pair("socks5h://u@p", "socks5h://p|1080|u|"), std::pair("socks5://p:80", "socks5://p|80||")}) {
    expect(Syntax::Environment, text, proxy, proxy);
  }
  expect(Syntax::UserSetting, "p:8080", "p|8080||", "p|8080||");
  expect(Syntax::UserSetting, "http=a:1;https=b:2", "a|1||", "b|2||");
  expect(Syntax::UserSetting, "ftp=a:1 HTTP=http://b:2", "b|2||", "none");
  expect(Syntax::UserSetting, "https=a:1;p:3;socks=x", "p|3||", "a|1||");
  for (const char* text : {"gopher://p", "http://", "p:x", "u:secret@p@q", "p\r\nX: y"}) {
    EXPECT_EQ(Catch([&] {
                SystemProxyRules({Syntax::Environment, text, "", ""});
              }),
              (Thrown{"Invalid system proxy", 13}))
        << text;
  }
}

TEST(SystemProxy, LeavesNoPasswordInMemory) {
  alignas(SystemProxyRules) char memory[sizeof(SystemProxyRules)] = {};
  const std::string_view bytes(memory, sizeof memory);
  auto* const rules = new (memory) SystemProxyRules({Syntax::Environment, "user:s3cret@p", "", ""});
  EXPECT_NE(bytes.find("s3cret"), std::string_view::npos);
  rules->~SystemProxyRules();
  EXPECT_EQ(bytes.find("s3cret"), std::string_view::npos);
}

TEST(SystemProxy, HasExceptions) {
  const auto expect = [](Syntax syntax, const char* exceptions, const wchar_t* direct, const wchar_t* by_proxy) {
    for (const wchar_t* urls : {direct, by_proxy}) {
      for (const std::wstring& url : Words(urls)) {
        EXPECT_EQ(ProxyFor({syntax, "p", "p", exceptions}, url), urls == direct ? "none" : "p|80||")
            << exceptions << SplitAddress(url).ToText();
      }
    }
  };
  expect(Syntax::Environment, "*", L"http://h/ https://[::1]/", L"");
  expect(Syntax::Environment, " .example.com,, other.org ",
         L"http://example.com/ http://www.EXAMPLE.com./ https://a.b.other.org:1/",
         L"http://badexample.com/ http://example.com.evil/ http://org/");
  expect(Syntax::Environment, "10.0.0.0/8,[2001:DB8::1],fd00::/8,127.0.0.1",
         L"http://10.9.8.7/ http://[2001:db8:0::1]/ http://[fd12::%25eth0]/ http://127.0.0.1/",
         L"http://11.0.0.1/ http://[2001:db8::2]/ http://x.127.0.0.1.de/");
  expect(Syntax::Environment, "a:8080,[::1]:81,*.b", L"http://a:8080/ http://x.a:8080/ http://[::1]:81/ http://x.b/",
         L"http://a/ https://a/ http://[::1]/");
  expect(Syntax::Environment, "<local>;x,0.1", L"", L"http://h/ http://10.0.0.1/");
  expect(Syntax::UserSetting, "<local>;*.corp; 10.*", L"http://intranet/ http://a.b.CORP/ http://10.1.2.3/",
         L"http://corp.com/ http://110.1.2.3/ http://[::1]/");
  expect(Syntax::UserSetting, "https://a*z;b:81", L"https://az/ https://aXXz/ http://b:81/",
         L"http://az/ https://azb/ http://b/ http://x.b:81/");
}

}  // namespace
