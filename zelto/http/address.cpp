#include "zelto/http/address.h"

#include "zelto/http/ip_address.h"
#include "zelto/platform/errors.h"
#include "zelto/text/ascii.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>

namespace Zelto::Utilities {
namespace {

constexpr std::uint16_t kHttpPort = 80;
constexpr std::uint16_t kHttpsPort = 443;
constexpr auto kNone = std::string_view::npos;

[[noreturn]] void Refuse(std::string_view reason) {
  throw Win32Exception(std::string("Invalid URL: ").append(reason), Platform::kInvalidUrl);
}

// What a byte may stand in without an escape.
constexpr unsigned kAnywhere = 1;
constexpr unsigned kUserInfo = 2;
constexpr unsigned kPath = 4;

constexpr std::array<std::uint8_t, 256> MakePlaces() {
  std::array<std::uint8_t, 256> places{};
  const auto add = [&](std::string_view bytes, unsigned place) {
    for (const char byte : bytes) {
      auto& target = places[static_cast<unsigned char>(byte)];
      target = static_cast<std::uint8_t>(target | place);
    }
  };
  add("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~", kAnywhere | kUserInfo | kPath);
  add("!$&'()*+,;=:", kUserInfo | kPath);
  add("@/?", kPath);
  return places;
}

constexpr auto kPlaces = MakePlaces();

bool MayStandIn(unsigned place, char byte) noexcept {
  return (kPlaces[static_cast<unsigned char>(byte)] & place) != 0;
}

bool IsUnreserved(char byte) noexcept {
  return MayStandIn(kAnywhere, byte);
}

bool IsControl(char byte) noexcept {
  return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

bool IsEscape(std::string_view text) noexcept {
  return text.size() >= 3 && text[0] == '%' && Ascii::IsHexDigit(static_cast<unsigned char>(text[1])) &&
         Ascii::IsHexDigit(static_cast<unsigned char>(text[2]));
}

void AppendEscape(std::string& target, char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  target += {'%', kDigits[value >> 4], kDigits[value & 0xF]};
}

// Escapes the bytes that may not stand there, but not what is escaped already.
std::string Escape(std::string_view text, unsigned place) {
  const auto is_plain = [place](char byte) { return MayStandIn(place, byte); };
  std::string result(text.begin(), std::find_if_not(text.begin(), text.end(), is_plain));
  for (std::size_t i = result.size(); i < text.size(); ++i) {
    if (MayStandIn(place, text[i]) || IsEscape(text.substr(i))) {
      result += text[i];
    } else {
      AppendEscape(result, text[i]);
    }
  }
  return result;
}

std::uint16_t ParsePort(std::string_view text) {
  unsigned port = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9' || (port = port * 10 + static_cast<unsigned>(digit - '0')) > 0xFFFF) {
      Refuse("the port is not a number from 1 to 65535");
    }
  }
  if (port == 0) {
    Refuse("the port is not a number from 1 to 65535");
  }
  return static_cast<std::uint16_t>(port);
}

// What stands in brackets, with its zone as an address has it.
std::string ReadIpv6(std::string_view text) {
  const std::size_t percent = text.find('%');
  if (!ParseIpv6(text.substr(0, percent))) {
    Refuse("no IPv6 address stands in the brackets");
  }
  std::string host("[");
  host.append(text.substr(0, percent));
  if (percent != kNone) {
    std::string_view zone = text.substr(percent + 1);
    zone.remove_prefix(zone.substr(0, 2) == "25" && zone.size() > 2 ? 2 : 0);
    if (zone.empty() || !std::all_of(zone.begin(), zone.end(), IsUnreserved)) {
      Refuse("the zone of the IPv6 address is not valid");
    }
    host.append("%25").append(zone);
  }
  return host + "]";
}

std::string ReadName(std::string_view text) {
  std::string host(text.begin(), std::find_if_not(text.begin(), text.end(), IsUnreserved));
  for (std::size_t i = host.size(); i < text.size(); ++i) {
    const bool is_ascii = static_cast<unsigned char>(text[i]) < 0x80;
    if (IsUnreserved(text[i])) {
      host += text[i];
    } else if (!is_ascii) {
      AppendEscape(host, text[i]);
    } else if (IsEscape(text.substr(i)) && Ascii::HexDigitValue(static_cast<unsigned char>(text[i + 1])) >= 8) {
      host.append(text.substr(i, 3));  // an escaped ASCII character could end the host for somebody else
      i += 2;
    } else {
      Refuse("the host holds a character that it must not");
    }
  }
  if (host.empty()) {
    Refuse("there is no host");
  }
  return host;
}

// Host and port.
void ReadPlace(std::string_view text, Address& address) {
  std::size_t host_end = text.find(':');
  if (!text.empty() && text[0] == '[') {
    const std::size_t bracket = text.find(']');
    if (bracket == kNone || (bracket + 1 < text.size() && text[bracket + 1] != ':')) {
      Refuse("the brackets around the host do not match");
    }
    address.host = ReadIpv6(text.substr(1, bracket - 1));
    host_end = bracket + 1 < text.size() ? bracket + 1 : kNone;
  } else {
    address.host = ReadName(text.substr(0, host_end));
  }
  if (host_end != kNone && host_end + 1 < text.size()) {
    address.port = ParsePort(text.substr(host_end + 1));
  }
}

std::string ToUtf8(std::wstring_view url) {
  try {
    return StringUtilities::Utf16ToUtf8(url);
  } catch (const std::range_error&) {
    Refuse("it holds half a character");
  }
}

}  // namespace

std::string Address::ToText() const {
  std::string text;
  text.reserve(scheme.size() + user_info.size() + host.size() + path.size() + 10);
  text.append(scheme).append("://");
  if (!user_info.empty()) {
    text.append(user_info).append("@");
  }
  text += host;
  if (port != (scheme == "https" ? kHttpsPort : kHttpPort)) {
    text += ':';
    text += std::to_string(port);
  }
  text += path;
  return text;
}

Address SplitAddress(std::wstring_view url) {
  return SplitAddress(ToUtf8(url));
}

Address SplitAddress(std::string_view url) {
  if (std::any_of(url.begin(), url.end(), IsControl)) {
    Refuse("it holds a control character");
  }
  const std::size_t scheme_end = url.find("://");
  if (scheme_end == kNone) {
    Refuse("there is no scheme");
  }
  Address address;
  address.scheme = url.substr(0, scheme_end);
  std::transform(address.scheme.begin(), address.scheme.end(), address.scheme.begin(), Ascii::ToLower<char>);
  if (address.scheme != "http" && address.scheme != "https") {
    throw Win32Exception("Unsupported URL scheme", Platform::kUnrecognizedScheme);
  }
  address.port = address.scheme == "https" ? kHttpsPort : kHttpPort;

  std::string_view rest = url.substr(scheme_end + 3);
  rest = rest.substr(0, rest.find('#'));
  const std::size_t authority_end = std::min(rest.find('/'), rest.find('?'));
  const std::string_view authority = rest.substr(0, authority_end);
  const std::size_t at = authority.find('@');
  if (at != kNone && authority.find('@', at + 1) != kNone) {
    Refuse("two @ stand in front of the path");
  }
  if (authority.find('\\') != kNone) {
    Refuse("a backslash stands in front of the path");
  }
  if (at != kNone) {
    address.user_info = Escape(authority.substr(0, at), kUserInfo);
  }
  ReadPlace(authority.substr(at == kNone ? 0 : at + 1), address);

  const std::string_view path = authority_end == kNone ? std::string_view() : rest.substr(authority_end);
  address.path = Escape(path, kPath);
  if (address.path.empty() || address.path[0] != '/') {
    address.path.insert(0, 1, '/');
  }
  return address;
}

}  // namespace Zelto::Utilities
