#include "zelto/http/proxy_rules.h"

#include "zelto/http/ip_address.h"
#include "zelto/platform/errors.h"
#include "zelto/text/ascii.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Zelto::Utilities {
namespace {

using Syntax = Platform::SystemProxyTexts::Syntax;
constexpr auto kNone = std::string_view::npos;
constexpr std::uint32_t kSocksPort = 1080;

std::string ToLower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), Ascii::ToLower<char>);
  return result;
}

std::vector<std::string_view> SplitAtAny(std::string_view text, const char* separators) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of(separators);
    if (end != 0) {
      parts.push_back(text.substr(0, end));
    }
    text.remove_prefix(end == kNone ? text.size() : end + 1);
  }
  return parts;
}

std::string Unescape(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto digit = [&](std::size_t at) { return Ascii::HexDigitValue(static_cast<unsigned char>(text[at])); };
    if (text[i] == '%' && i + 2 < text.size() && digit(i + 1) >= 0 && digit(i + 2) >= 0) {
      result += static_cast<char>(digit(i + 1) * 16 + digit(i + 2));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

std::optional<Proxy> ParseProxy(std::string_view text) {
  if (text.empty()) {
    return std::nullopt;
  }
  const std::size_t scheme_end = text.find("://");
  const std::string scheme = scheme_end == kNone ? "http" : ToLower(text.substr(0, scheme_end));
  const std::string_view rest = scheme_end == kNone ? text : text.substr(scheme_end + 3);
  constexpr std::string_view kSchemes[] = {"http", "https", "socks4", "socks4a", "socks5", "socks5h"};
  if (std::find(std::begin(kSchemes), std::end(kSchemes), scheme) == std::end(kSchemes)) {
    throw Win32Exception("Invalid system proxy", Platform::kInvalidData);
  }
  try {
    const bool is_socks = scheme.compare(0, 5, "socks") == 0;
    const auto split_as = [rest](std::string url) {
      const WipeAtEnd wipe(url.append(rest));
      return SplitAddress(std::string_view(url));
    };
    const Address address = split_as(scheme == "https" ? "https://" : "http://");
    Proxy proxy;
    proxy.host = scheme == "http" ? address.host : scheme + "://" + address.host;
    // A port that depends on the scheme was not given.
    const bool has_port = !is_socks || split_as("https://").port == address.port;
    proxy.port = has_port ? address.port : kSocksPort;
    const std::string_view user_info = address.user_info;
    const std::size_t colon = user_info.find(':');
    proxy.user = Unescape(user_info.substr(0, colon));
    proxy.password = colon == kNone ? "" : Unescape(user_info.substr(colon + 1));
    return proxy;
  } catch (const Win32Exception&) {
    // Without the reason's text: user and password may stand in the setting.
    throw Win32Exception("Invalid system proxy", Platform::kInvalidData);
  }
}

// "proxy:8080" for every scheme, or "http=proxy:8080;https=other:8080".
std::string_view SettingFor(std::string_view scheme, std::string_view setting) {
  std::string_view for_all;
  for (const std::string_view part : SplitAtAny(setting, "; \t\r\n")) {
    const std::size_t equals = part.find('=');
    if (equals == kNone) {
      for_all = for_all.empty() ? part : for_all;
    } else if (ToLower(part.substr(0, equals)) == scheme) {
      return part.substr(equals + 1);
    }
  }
  return for_all;
}

// Whether a text matches a pattern in which "*" stands for any characters, also none.
bool MatchesPattern(std::string_view text, std::string_view pattern) noexcept {
  std::size_t at = 0;
  std::size_t star = kNone;
  std::size_t star_at = 0;
  std::size_t i = 0;
  while (at < text.size()) {
    if (i < pattern.size() && pattern[i] == '*') {
      star = i++;
      star_at = at;
    } else if (i < pattern.size() && pattern[i] == text[at]) {
      ++i;
      ++at;
    } else if (star != kNone) {
      i = star + 1;
      at = ++star_at;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', i) == kNone;
}

// Host and port of an entry; the port is empty when it has none.
struct Entry {
  std::string_view host;
  std::string_view port;
};

Entry SplitEntry(std::string_view text) noexcept {
  if (!text.empty() && text[0] == '[') {
    const std::size_t bracket = text.find(']');
    const std::string_view rest = bracket == kNone ? std::string_view() : text.substr(bracket + 1);
    return {text.substr(1, bracket == kNone ? kNone : bracket - 1), rest.empty() ? rest : rest.substr(1)};
  }
  const std::size_t colon = text.find(':');
  if (colon == kNone || text.find(':', colon + 1) != kNone) {
    return {text, {}};  // several: an IPv6 address without brackets
  }
  return {text.substr(0, colon), text.substr(colon + 1)};
}

std::string_view WithoutDotAtEnd(std::string_view name) noexcept {
  return !name.empty() && name.back() == '.' ? name.substr(0, name.size() - 1) : name;
}

bool IsInDomain(std::string_view host, std::string_view domain) noexcept {
  domain = WithoutDotAtEnd(domain);
  domain.remove_prefix(domain.substr(0, 2) == "*." ? 2 : 0);
  domain.remove_prefix(domain.substr(0, 1) == "." ? 1 : 0);
  if (domain.empty() || host.size() < domain.size() || host.substr(host.size() - domain.size()) != domain) {
    return false;
  }
  return host.size() == domain.size() || host[host.size() - domain.size() - 1] == '.';
}

bool EnvironmentEntryMatches(std::string_view entry, std::string_view host, const std::optional<IpAddress>& ip) {
  if (entry == "*") {
    return true;
  }
  return ip ? IsInNetwork(*ip, entry) : IsInDomain(host, entry);
}

bool SettingEntryMatches(std::string_view entry, std::string_view host, const std::optional<IpAddress>& ip) {
  if (entry == "<local>") {
    return !ip && host.find('.') == kNone;
  }
  return MatchesPattern(host, entry);
}

}  // namespace

SystemProxyRules::SystemProxyRules(const Platform::SystemProxyTexts& texts) : syntax_(texts.syntax) {
  const bool is_setting = syntax_ == Syntax::UserSetting;
  http_ = ParseProxy(is_setting ? SettingFor("http", texts.http) : texts.http);
  https_ = ParseProxy(is_setting ? SettingFor("https", texts.https) : texts.https);
  for (const std::string_view part : SplitAtAny(texts.exceptions, is_setting ? "; \t\r\n" : ", \t\r\n")) {
    exceptions_.push_back(ToLower(part));
  }
}

const Proxy* SystemProxyRules::For(const Address& address) const {
  const std::optional<Proxy>& proxy = address.scheme == "https" ? https_ : http_;
  return proxy && !IsException(address) ? &*proxy : nullptr;
}

bool SystemProxyRules::IsException(const Address& address) const {
  std::string host = ToLower(WithoutDotAtEnd(address.host));
  if (host[0] == '[') {
    host = host.substr(1, host.find_first_of("%]") - 1);  // a zone belongs to this machine alone
  }
  const auto ip = ParseIpAddress(host);
  for (std::string_view text : exceptions_) {
    const std::size_t scheme_end = text.find("://");
    if (scheme_end != kNone) {
      if (text.substr(0, scheme_end) != address.scheme) {
        continue;
      }
      text.remove_prefix(scheme_end + 3);
    }
    const Entry entry = SplitEntry(text);
    if (!entry.port.empty() && entry.port != std::to_string(address.port)) {
      continue;
    }
    if (syntax_ == Syntax::UserSetting ? SettingEntryMatches(entry.host, host, ip)
                                       : EnvironmentEntryMatches(entry.host, host, ip)) {
      return true;
    }
  }
  return false;
}

}  // namespace Zelto::Utilities
