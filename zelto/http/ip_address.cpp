#include "zelto/http/ip_address.h"

#include "zelto/text/ascii.h"

#include <algorithm>
#include <cstddef>

namespace Zelto::Utilities {
namespace {

constexpr std::size_t kMappedPrefix = 12;  // bytes in front of an IPv4 address in its mapped form

// Reads a decimal number of at most three digits.
std::optional<unsigned> ParseSmallNumber(std::string_view text) noexcept {
  if (text.empty() || text.size() > 3 || (text.size() > 1 && text[0] == '0')) {
    return std::nullopt;
  }
  unsigned value = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') {
      return std::nullopt;
    }
    value = value * 10 + static_cast<unsigned>(digit - '0');
  }
  return value;
}

std::optional<unsigned> ParseGroup(std::string_view text) noexcept {
  if (text.empty() || text.size() > 4) {
    return std::nullopt;
  }
  unsigned value = 0;
  for (const char digit : text) {
    const int digit_value = Ascii::HexDigitValue(static_cast<unsigned char>(digit));
    if (digit_value < 0) {
      return std::nullopt;
    }
    value = value * 16 + static_cast<unsigned>(digit_value);
  }
  return value;
}

// Bytes of groups between single colons, the last of which may be an IPv4 address.
struct Groups {
  IpAddress bytes{};
  std::size_t size = 0;
};

bool ParseGroups(std::string_view text, Groups& groups) noexcept {
  if (text.empty()) {
    return true;
  }
  while (true) {
    const std::size_t colon = text.find(':');
    const std::string_view part = text.substr(0, colon);
    const auto ipv4 = colon == std::string_view::npos ? ParseIpv4(part) : std::nullopt;
    const auto group = ParseGroup(part);
    const std::size_t added = ipv4 ? 4 : 2;
    if ((!ipv4 && !group) || groups.size + added > groups.bytes.size()) {
      return false;
    }
    if (ipv4) {
      std::copy(ipv4->begin() + kMappedPrefix, ipv4->end(), groups.bytes.begin() + groups.size);
    } else {
      groups.bytes[groups.size] = static_cast<std::uint8_t>(*group >> 8);
      groups.bytes[groups.size + 1] = static_cast<std::uint8_t>(*group & 0xFF);
    }
    groups.size += added;
    if (colon == std::string_view::npos) {
      return true;
    }
    text.remove_prefix(colon + 1);
    if (text.empty()) {
      return false;  // a colon at the end
    }
  }
}

}  // namespace

std::optional<IpAddress> ParseIpv4(std::string_view text) noexcept {
  IpAddress address{};
  address[10] = address[11] = 0xFF;
  for (std::size_t i = kMappedPrefix; i < address.size(); ++i) {
    const bool last = i + 1 == address.size();
    const std::size_t dot = text.find('.');
    if (last != (dot == std::string_view::npos)) {
      return std::nullopt;
    }
    const auto number = ParseSmallNumber(text.substr(0, dot));
    if (!number || *number > 255) {
      return std::nullopt;
    }
    address[i] = static_cast<std::uint8_t>(*number);
    text.remove_prefix(last ? text.size() : dot + 1);
  }
  return address;
}

std::optional<IpAddress> ParseIpv6(std::string_view text) noexcept {
  const std::size_t gap = text.find("::");
  Groups front;
  if (!ParseGroups(text.substr(0, gap), front)) {
    return std::nullopt;
  }
  if (gap == std::string_view::npos) {
    return front.size == front.bytes.size() ? std::optional(front.bytes) : std::nullopt;
  }
  Groups back;
  const bool front_is_plain = text.substr(0, gap).find('.') == std::string_view::npos;
  // The gap stands for one group at least.
  if (!front_is_plain || !ParseGroups(text.substr(gap + 2), back) || front.size + back.size > 14) {
    return std::nullopt;
  }
  std::copy_n(back.bytes.begin(), back.size, front.bytes.end() - static_cast<std::ptrdiff_t>(back.size));
  return front.bytes;
}

std::optional<IpAddress> ParseIpAddress(std::string_view text) noexcept {
  const auto ipv4 = ParseIpv4(text);
  return ipv4 ? ipv4 : ParseIpv6(text);
}

bool IsInNetwork(const IpAddress& address, std::string_view network) noexcept {
  const std::size_t slash = network.find('/');
  const std::string_view base_text = network.substr(0, slash);
  const auto base = ParseIpAddress(base_text);
  if (!base) {
    return false;
  }
  if (slash == std::string_view::npos) {
    return *base == address;
  }
  const auto length = ParseSmallNumber(network.substr(slash + 1));
  const std::size_t offset = ParseIpv4(base_text) ? kMappedPrefix * 8 : 0;
  if (!length || *length + offset > base->size() * 8) {
    return false;
  }
  const std::size_t bits = *length + offset;
  if (!std::equal(base->begin(), base->begin() + static_cast<std::ptrdiff_t>(bits / 8), address.begin())) {
    return false;
  }
  const auto mask = static_cast<unsigned>(0xFF00U >> (bits % 8)) & 0xFFU;
  return bits % 8 == 0 || ((*base)[bits / 8] & mask) == (address[bits / 8] & mask);
}

}  // namespace Zelto::Utilities
