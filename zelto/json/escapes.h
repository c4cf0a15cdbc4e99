/// @file
/// The escape sequences of JSON strings, over wide characters and 16-bit units alike. Not installed.
#pragma once

#include "zelto/text/ascii.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <type_traits>

namespace Zelto::Json {

/// The masked characters, and index for index the letters that stand for them behind a backslash.
inline constexpr std::array<wchar_t, 8> kMaskedCharacters{L'\\', L'"', L'\r', L'\n', L'\f', L'\t', L'\b', L'/'};
inline constexpr std::array<wchar_t, 8> kEscapeLetters{L'\\', L'"', L'r', L'n', L'f', L't', L'b', L'/'};

/// Codes below are non-printing: 20, not 32. 0x14 to 0x1F pass unescaped, and callers depend on it.
inline constexpr std::uint16_t kFirstPrintingCode = 0x14;

/// The length of the escape of a non-printing character, "\u00" and two digits.
inline constexpr std::size_t kUnicodeEscapeLength = 6;

namespace Escapes {

// For each ASCII character its escape letter, or 0; for each escape letter its character, or 0.
struct Tables {
  constexpr Tables() {
    for (std::size_t i = 0; i < kMaskedCharacters.size(); ++i) {
      letter[static_cast<unsigned char>(kMaskedCharacters[i])] = static_cast<char>(kEscapeLetters[i]);
      character[static_cast<unsigned char>(kEscapeLetters[i])] = static_cast<char>(kMaskedCharacters[i]);
    }
  }
  std::array<char, 128> letter{};
  std::array<char, 128> character{};
};
inline constexpr Tables kTables;

template <typename Unit>
constexpr std::uint32_t CodeOf(Unit unit) noexcept {
  return static_cast<std::make_unsigned_t<Unit>>(unit);
}

}  // namespace Escapes

/// The letter that stands for a masked character; 0 for any other.
template <typename Unit>
constexpr char EscapeLetterOf(Unit unit) noexcept {
  const std::uint32_t code = Escapes::CodeOf(unit);
  return code < Escapes::kTables.letter.size() ? Escapes::kTables.letter[code] : '\0';
}

/// The masked character that a letter stands for; 0 for any other.
template <typename Unit>
constexpr char CharacterOfEscapeLetter(Unit letter) noexcept {
  const std::uint32_t code = Escapes::CodeOf(letter);
  return code < Escapes::kTables.character.size() ? Escapes::kTables.character[code] : '\0';
}

template <typename Unit>
constexpr bool IsNonPrinting(Unit unit) noexcept {
  return Escapes::CodeOf(unit) < kFirstPrintingCode;
}

/// Writes the six characters for a non-printing one and returns their end. The last two are added to '0' without
/// letters, so that 0x0B becomes "\u000;": what reads these texts knows it.
template <typename From, typename To>
To* WriteUnicodeEscape(From unit, To* to) noexcept {
  for (const char c : {'\\', 'u', '0', '0'}) {
    *to++ = static_cast<To>(c);
  }
  const std::uint32_t code = Escapes::CodeOf(unit);
  *to++ = static_cast<To>('0' + (code >> 4));
  *to++ = static_cast<To>('0' + code % 16);
  return to;
}

/// Writes a character, escaped where it is masked or non-printing, and returns the end of what it wrote.
template <typename From, typename To>
To* WriteEscaped(From unit, To* to) noexcept {
  if (const char letter = EscapeLetterOf(unit)) {
    *to++ = To{'\\'};
    *to++ = static_cast<To>(letter);
  } else if (IsNonPrinting(unit)) {
    to = WriteUnicodeEscape(unit, to);
  } else {
    *to++ = static_cast<To>(unit);
  }
  return to;
}

/// The four characters behind a "\u" as a unit, read as leniently as `std::stoul` in base 16 does: white space, a sign
/// and "0x" may stand in front, anything may follow the digits, and a negative number is taken modulo 2 to the 16th.
/// Four characters cannot be out of range.
///
/// @throws std::invalid_argument  "invalid stoul argument" when there is no digit
inline std::uint16_t ReadUnicodeEscape(std::wstring_view four) {
  using Utilities::Ascii::HexDigitValue;
  const auto digit_at = [four](std::size_t i) { return i < four.size() ? HexDigitValue(four[i]) : -1; };
  std::size_t i = 0;
  while (i < four.size() && Utilities::Ascii::IsSpace(four[i])) {
    ++i;
  }
  const bool negative = i < four.size() && four[i] == L'-';
  if (negative || (i < four.size() && four[i] == L'+')) {
    ++i;
  }
  if (digit_at(i) == 0 && i + 1 < four.size() && (four[i + 1] == L'x' || four[i + 1] == L'X') && digit_at(i + 2) >= 0) {
    i += 2;
  }
  if (digit_at(i) < 0) {
    throw std::invalid_argument("invalid stoul argument");
  }
  std::uint32_t value = 0;
  for (; digit_at(i) >= 0; ++i) {
    value = value * 16 + static_cast<std::uint32_t>(digit_at(i));
  }
  return static_cast<std::uint16_t>(negative ? 0U - value : value);
}

/// Decodes the escape sequence at `at`, a backslash, calls `put(wchar_t)` for what it stands for, and returns its end.
/// An unknown escape vanishes with its character.
///
/// @throws std::invalid_argument  as `ReadUnicodeEscape`
template <typename Put>
const wchar_t* DecodeEscape(const wchar_t* at, const wchar_t* end, const Put& put) {
  if (++at == end) {
    return end;
  }
  if (const char character = CharacterOfEscapeLetter(*at)) {
    put(static_cast<wchar_t>(character));
  } else if (*at == L'u' && end - at > 4) {
    put(static_cast<wchar_t>(ReadUnicodeEscape({at + 1, 4})));
    return at + 5;
  }
  return at + 1;
}

}  // namespace Zelto::Json
