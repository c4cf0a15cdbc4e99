/// @file
/// Numbers as decimal text, without the C library's locale and `errno`. Not installed.
#pragma once

#include "zelto/text/ascii.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace Zelto::Json {

/// The decimal digits of a number, made on the stack.
class DecimalText {
 public:
  explicit DecimalText(std::uint64_t value, bool negative = false) noexcept {
    do {
      *--first_ = static_cast<wchar_t>(L'0' + value % 10);
      value /= 10;
    } while (value != 0);
    if (negative) {
      *--first_ = L'-';
    }
  }

  static DecimalText OfSigned(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? DecimalText(std::uint64_t{0} - bits, true) : DecimalText(bits);
  }

  DecimalText(const DecimalText&) = delete;
  DecimalText& operator=(const DecimalText&) = delete;

  std::wstring_view View() const noexcept {
    return {first_, static_cast<std::size_t>(units_ + sizeof(units_) / sizeof(*units_) - first_)};
  }

 private:
  wchar_t units_[21];
  wchar_t* first_ = units_ + sizeof(units_) / sizeof(*units_);
};

/// A number as the C library's conversions read it: white space, a sign, digits, up to the first other unit.
struct ScannedNumber {
  std::uint64_t magnitude = 0;
  bool negative = false;
  bool overflow = false;
  bool has_digits = false;
};

template <typename Unit>
ScannedNumber ScanNumber(std::basic_string_view<Unit> text) noexcept {
  using Utilities::Ascii::IsDigit;
  using Utilities::Ascii::IsSpace;
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
  std::size_t i = 0;
  while (i < text.size() && IsSpace(static_cast<wchar_t>(text[i]))) {
    ++i;
  }
  ScannedNumber number;
  if (i < text.size() && (text[i] == Unit{'-'} || text[i] == Unit{'+'})) {
    number.negative = text[i++] == Unit{'-'};
  }
  number.has_digits = i < text.size() && IsDigit(static_cast<wchar_t>(text[i]));
  for (; i < text.size() && IsDigit(static_cast<wchar_t>(text[i])); ++i) {
    const auto digit = static_cast<std::uint64_t>(text[i] - Unit{'0'});
    number.overflow |= number.magnitude > (kLargest - digit) / 10;
    number.magnitude = number.magnitude * 10 + digit;
  }
  return number;
}

/// The scanned number as a signed 32-bit one; empty when it is out of range.
inline std::optional<std::int32_t> ToInt32(const ScannedNumber& number) noexcept {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int32_t>::max();
  if (number.overflow || number.magnitude > kLargest + (number.negative ? 1 : 0)) {
    return std::nullopt;
  }
  const auto magnitude = static_cast<std::int64_t>(number.magnitude);
  return static_cast<std::int32_t>(number.negative ? -magnitude : magnitude);
}

/// The scanned number as an unsigned 64-bit one; a negative one is taken modulo 2 to the 64th, as the C library does.
/// Empty when its magnitude is out of range.
inline std::optional<std::uint64_t> ToUint64(const ScannedNumber& number) noexcept {
  if (number.overflow) {
    return std::nullopt;
  }
  return number.negative ? std::uint64_t{0} - number.magnitude : number.magnitude;
}

}  // namespace Zelto::Json
