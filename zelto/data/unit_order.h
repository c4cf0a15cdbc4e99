/// @file
/// The order of wide texts by their UTF-16 units, the same whatever the size of `wchar_t`. Not installed.
#pragma once

#include "zelto/text/utf16_units.h"

#include <compare>
#include <cstdint>
#include <string_view>

namespace Zelto::Utilities {

/// Takes the units of UTF-16 from a text one after the other; a character above U+FFFF counts as its surrogate pair,
/// and one above U+10FFFF as a unit that is greater than any other.
class UnitReader {
 public:
  explicit UnitReader(std::wstring_view text) noexcept : rest_(text) {}

  /// The next unit, -1 at the end.
  std::int64_t Next() noexcept {
    if (second_ >= 0) {
      const std::int32_t unit = second_;
      second_ = -1;
      return unit;
    }
    if (rest_.empty()) {
      return -1;
    }
    const wchar_t character = rest_.front();
    rest_.remove_prefix(1);
    if (ValueOf(character) > kMaximumCodePoint) {
      return ValueOf(character);
    }
    std::int32_t first = -1;
    ForEachUnit(character, [&first, this](char16_t unit) { (first < 0 ? first : second_) = unit; });
    return first;
  }

 private:
  std::wstring_view rest_;
  std::int32_t second_ = -1;  // of a surrogate pair whose first unit has been taken
};

/// The order by unit; a text comes before those it begins.
inline std::strong_ordering CompareByUnit(std::wstring_view left, std::wstring_view right) noexcept {
  UnitReader left_units(left);
  UnitReader right_units(right);
  while (true) {
    const std::int64_t unit = left_units.Next();
    const std::strong_ordering order = unit <=> right_units.Next();
    if (std::is_neq(order) || unit < 0) {
      return order;
    }
  }
}

}  // namespace Zelto::Utilities
