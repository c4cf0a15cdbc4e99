#include "zelto/http/proxy_rules.h"

#include "tests/http/library_folder.h"

#include <new>
#include <string_view>

using namespace Zelto::Utilities;
using Syntax = Zelto::Platform::SystemProxyTexts::Syntax;
using Zelto::Testing::Catch;
using Zelto::Testing::Thrown;

namespace {

std::string ProxyFor(const Zelto::Platform::SystemProxyTexts& texts, const std::wstring& url) {
  const SystemProxyRules rules(texts);
  const Proxy* const proxy = rules.For(SplitAddress(url));
  return proxy == nullptr ? "none"
                          : proxy->host + "|" + std::to_string(proxy->port) + "|" + proxy->user + "|" + proxy->password;
}

TEST(SystemProxy, IsReadFromTheEnvironmentAndFromTheUsersSetting) {
  const struct {
    Syntax syntax;
    std::string text;
    std::string for_http;
    std::string for_https;
  } cases[] = {
      {Syntax::Environment, "", "none", "none"},
      {Syntax::Environment, "p", "p|80||", "p|80||"},
      {Syntax::Environment, "HTTP://p:3128/", "p|3128||", "p|3128||"},
      {Syntax::Environment, "http://u%3a:p%40:w@[::1]:8080", "[::1]|8080|u:|p@:w", "[::1]|8080|u:|p@:w"},
      {Syntax::Environment, "https://p", "https://p|443||", "https://p|443||"},
      {Syntax::Environment, "socks5h://u@p", "socks5h://p|1080|u|", "socks5h://p|1080|u|"},
      {Syntax::Environment, "socks5://p:80", "socks5://p|80||", "socks5://p|80||"},
      {Syntax::UserSetting, "p:8080", "p|8080||", "p|8080||"},
      {Syntax::UserSetting, "http=a:1;https=b:2", "a|1||", "b|2||"},
      {Syntax::UserSetting, "ftp=a:1 HTTP=http://b:2", "b|2||", "none"},
      {Syntax::UserSetting, "https=a:1;p:3;socks=x", "p|3||", "a|1||"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(ProxyFor({each.syntax, each.text, each.text, ""}, L"http://h/"), each.for_http) << each.text;
    EXPECT_EQ(ProxyFor({each.syntax, each.text, each.text, ""}, L"https://h/"), each.for_https) << each.text;
  }
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
  const struct {
    Syntax syntax;
    const char* exceptions;
    std::vector<const wchar_t*> direct;
    std::vector<const wchar_t*> by_proxy;
  } cases[] = {
      {Syntax::Environment, "*", {L"http://h/", L"https://[::1]/"}, {}},
      {Syntax::Environment,
       " .example.com,, other.org ",
       {L"http://example.com/", L"http://www.EXAMPLE.com./", L"https://a.b.other.org:1/"},
       {L"http://badexample.com/", L"http://example.com.evil/", L"http://org/"}},
      {Syntax::Environment,
       "10.0.0.0/8,[2001:DB8::1],fd00::/8,127.0.0.1",
       {L"http://10.9.8.7/", L"http://[2001:db8:0::1]/", L"http://[fd12::%25eth0]/", L"http://127.0.0.1/"},
       {L"http://11.0.0.1/", L"http://[2001:db8::2]/", L"http://x.127.0.0.1.de/"}},
      {Syntax::Environment,
       "a:8080,[::1]:81,*.b",
       {L"http://a:8080/", L"http://x.a:8080/", L"http://[::1]:81/", L"http://x.b/"},
       {L"http://a/", L"https://a/", L"http://[::1]/"}},
      {Syntax::Environment, "<local>;x,0.1", {}, {L"http://h/", L"http://10.0.0.1/"}},
      {Syntax::UserSetting,
       "<local>;*.corp; 10.*",
       {L"http://intranet/", L"http://a.b.CORP/", L"http://10.1.2.3/"},
       {L"http://corp.com/", L"http://110.1.2.3/", L"http://[::1]/"}},
      {Syntax::UserSetting,
       "https://a*z;b:81",
       {L"https://az/", L"https://aXXz/", L"http://b:81/"},
       {L"http://az/", L"https://azb/", L"http://b/", L"http://x.b:81/"}},
  };
  for (const auto& each : cases) {
    for (const wchar_t* url : each.direct) {
      EXPECT_EQ(ProxyFor({each.syntax, "p", "p", each.exceptions}, url), "none")
          << each.exceptions << SplitAddress(std::wstring_view(url)).ToText();
    }
    for (const wchar_t* url : each.by_proxy) {
      EXPECT_NE(ProxyFor({each.syntax, "p", "p", each.exceptions}, url), "none")
          << each.exceptions << SplitAddress(std::wstring_view(url)).ToText();
    }
  }
}

}  // namespace
