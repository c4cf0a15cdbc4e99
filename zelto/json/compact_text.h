/// @file
/// The 16-bit text in which documents are held: copying to and from wide strings, comparing, lists of texts.
/// Not installed.
#pragma once

#include "zelto/json/unit_block.h"
#include "zelto/text/bad_conversion.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Zelto::Json {

/// Whether a `wchar_t` is wider than a unit of UTF-16, so that a caller's text may hold code points above U+FFFF.
inline constexpr bool kWideCharacters = sizeof(wchar_t) > sizeof(char16_t);

/// Copies characters as units. False when one of them was above U+FFFF; what stands in `to` is then of no use.
inline bool TryNarrow(const wchar_t* from, std::size_t count, char16_t* to) noexcept {
  if constexpr (kWideCharacters) {
    std::uint32_t seen = 0;
    for (std::size_t i = 0; i < count; ++i) {
      seen |= Utilities::ValueOf(from[i]);
      to[i] = static_cast<char16_t>(from[i]);
    }
    return seen <= 0xFFFFU;
  } else {
    std::copy_n(reinterpret_cast<const char*>(from), count * sizeof(*to), reinterpret_cast<char*>(to));
    return true;
  }
}

inline void Widen(const char16_t* from, std::size_t count, wchar_t* to) noexcept {
  CopyUnits(from, count, to);
}

inline std::wstring ToWide(std::u16string_view text) {
  std::wstring wide(text.size(), L'\0');
  Widen(text.data(), text.size(), wide.data());
  return wide;
}

inline std::wstring ToWide(std::wstring_view text) {
  return std::wstring(text);
}

/// Whether `text` holds a character above U+FFFF.
inline bool HasWideCharacters(std::wstring_view text) noexcept {
  if constexpr (kWideCharacters) {
    return std::any_of(text.begin(), text.end(), [](wchar_t c) { return Utilities::ValueOf(c) > 0xFFFFU; });
  } else {
    return false;
  }
}

/// Whether no character of `text` is above U+10FFFF, so that it can be held.
inline bool IsText(std::wstring_view text) noexcept {
  return std::none_of(text.begin(), text.end(),
                      [](wchar_t c) { return Utilities::ValueOf(c) > Utilities::kMaximumCodePoint; });
}

/// Calls `use(char16_t)` for the one or two units of a character.
///
/// @throws std::range_error  "bad conversion" above U+10FFFF
template <typename Use>
void UseUnits(wchar_t character, const Use& use) {
  if (Utilities::ValueOf(character) > Utilities::kMaximumCodePoint) {
    Utilities::ThrowBadConversion();
  }
  Utilities::ForEachUnit(character, use);
}

/// `text` with each character above U+FFFF replaced by its surrogate pair.
///
/// @throws std::range_error  "bad conversion" above U+10FFFF
inline std::wstring WithSurrogatePairs(std::wstring text) {
  if (!HasWideCharacters(text)) {
    return text;
  }
  std::wstring units;
  for (const wchar_t character : text) {
    UseUnits(character, [&units](char16_t unit) { units.push_back(static_cast<wchar_t>(unit)); });
  }
  return units;
}

/// The order of two texts by UTF-16 unit: negative, 0 or positive. No character of `left` is above U+FFFF.
inline int CompareUnits(std::wstring_view left, std::u16string_view right) noexcept {
  const std::size_t common = std::min(left.size(), right.size());
  for (std::size_t i = 0; i < common; ++i) {
    const auto unit = static_cast<char16_t>(left[i]);
    if (unit != right[i]) {
      return unit < right[i] ? -1 : 1;
    }
  }
  return left.size() == right.size() ? 0 : (left.size() < right.size() ? -1 : 1);
}

/// A length that must fit the 32 bits with which documents count.
///
/// @throws std::length_error  "JSON text too long"
inline std::uint32_t CheckedLength(std::size_t length) {
  if (length > std::numeric_limits<std::int32_t>::max()) {
    throw std::length_error("JSON text too long");
  }
  return static_cast<std::uint32_t>(length);
}

/// Several texts in one run of units: each is preceded by its length, in one unit below 0x8000 and in two above.
class TextList {
 public:
  static constexpr std::size_t kLongHeader = 0x8000;

  explicit TextList(std::u16string_view units) noexcept : rest_(units) {}

  static std::size_t HeaderSize(std::size_t length) noexcept { return length < kLongHeader ? 1 : 2; }

  static void WriteHeader(char16_t* to, std::size_t length) noexcept {
    if (length < kLongHeader) {
      *to = static_cast<char16_t>(length);
    } else {
      to[0] = static_cast<char16_t>(kLongHeader | (length >> 16));
      to[1] = static_cast<char16_t>(length & 0xFFFFU);
    }
  }

  /// Takes the next text; false at the end of the list.
  bool Next(std::u16string_view& text) noexcept {
    if (rest_.empty()) {
      return false;
    }
    std::size_t length = rest_[0];
    std::size_t header = 1;
    if (length >= kLongHeader) {
      length = ((length & (kLongHeader - 1)) << 16) | rest_[1];
      header = 2;
    }
    text = rest_.substr(header, length);
    rest_.remove_prefix(header + length);
    return true;
  }

 private:
  std::u16string_view rest_;
};

}  // namespace Zelto::Json
