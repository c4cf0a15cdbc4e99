/// @file
/// Units of UTF-16 in a `wchar_t` that may have 32 bits. Not installed.
#pragma once

#include <cstdint>

namespace Zelto::Utilities {

inline constexpr std::uint32_t kMaximumCodePoint = 0x10FFFF;

/// The value of a character without its sign: `wchar_t` is signed on Linux, and a negative one is above every limit.
constexpr std::uint32_t ValueOf(wchar_t character) noexcept {
  return static_cast<std::uint32_t>(character);
}

constexpr bool IsSurrogate(std::uint32_t value) noexcept {
  return (value & 0xFFFFF800U) == 0xD800U;
}

constexpr bool IsHighSurrogate(std::uint32_t value) noexcept {
  return (value & 0xFFFFFC00U) == 0xD800U;
}

constexpr bool IsLowSurrogate(std::uint32_t value) noexcept {
  return (value & 0xFFFFFC00U) == 0xDC00U;
}

/// Whether "." of the ECMAScript grammar leaves out a unit.
constexpr bool IsLineEnd(char16_t unit) noexcept {
  return unit == u'\n' || unit == u'\r' || unit == u'\u2028' || unit == u'\u2029';
}

/// Calls `use(char16_t)` for each unit of UTF-16 that a character stands for: itself, or its surrogate pair when it is
/// above U+FFFF. Of a value above U+10FFFF the low 16 bits remain.
template <typename Use>
constexpr void ForEachUnit(wchar_t character, const Use& use) {
  const std::uint32_t value = ValueOf(character);
  if (value > 0xFFFFU && value <= kMaximumCodePoint) {
    use(static_cast<char16_t>(0xD800U + ((value - 0x10000U) >> 10)));
    use(static_cast<char16_t>(0xDC00U + (value & 0x3FFU)));
  } else {
    use(static_cast<char16_t>(value & 0xFFFFU));
  }
}

}  // namespace Zelto::Utilities
