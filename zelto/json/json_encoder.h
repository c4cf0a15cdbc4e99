/// @file
/// The escape sequences of JSON strings.
#pragma once

#include <zelto/export.h>

#include <concepts>
#include <cstddef>
#include <string>

namespace Zelto::Utilities {

/// Escapes and unescapes the text of JSON strings.
///
/// A character is masked when it is a backslash, a double quote, a solidus, or one of carriage return, line feed, form
/// feed, tab and backspace; it is written as a backslash and a letter. A character is non-printing when its code is
/// below 0x14 (not 0x20: the codes 0x14 to 0x1F pass unescaped); it is written as "\u00" and two digits, which are
/// added to "0" without letters: U+000B becomes "\u000;", U+000E "\u000>" and U+000F "\u000?".
///
/// All operations are re-entrant. A null pointer is an empty text.
class ZELTO_API JsonEncoder {
 public:
  JsonEncoder() = delete;

  static bool IsMaskedCharacter(wchar_t c) noexcept;
  /// @param index  the character's place in the table of the eight masked ones; unchanged when it is none of them
  static bool IsMaskedCharacter(wchar_t c, int& index) noexcept;
  template <std::integral Index>
  static bool IsMaskedCharacter(wchar_t c, Index& index) noexcept {
    int found = 0;
    const bool masked = IsMaskedCharacter(c, found);
    index = masked ? static_cast<Index>(found) : index;
    return masked;
  }

  /// Whether there is a masked character; non-printing ones do not count.
  static bool NeedsEscaping(const std::wstring& text) noexcept;
  /// Whether there is a backslash.
  static bool IsEscaped(const std::wstring& text) noexcept;

  /// The length of the escaped text: 2 for a masked character, 6 for a non-printing one, 1 for any other.
  ///
  /// @return  0 when there is neither a masked nor a non-printing character
  static int CalculateOutputLength(const wchar_t* text) noexcept;

  /// The text with every masked and every non-printing character escaped.
  static std::wstring ToEscapedString(const wchar_t* text);
  /// As the other form; a character U+0000 is escaped like any other.
  static std::wstring ToEscapedString(const std::wstring& text);
  /// As the other form, but without a masked character the text itself, be there non-printing ones or not.
  static std::wstring ToEscapedString(std::wstring&& text);

  /// The escaped text as UTF-8. @throws std::range_error  "bad conversion" on a lone surrogate
  static std::string ToEscapedUtf8String(const wchar_t* text);
  /// The same on UTF-8. @throws std::range_error  "bad conversion" on malformed UTF-8
  static std::string ToEscapedUtf8String(const char* text);

  /// The text with its escape sequences decoded. "\u" takes the next four characters as `std::stoul` in base 16 does
  /// (white space, a sign and "0x" may stand in front, anything may follow the digits) and gives one unit of 16 bits,
  /// surrogates included; with fewer than four characters behind it, it vanishes like every unknown escape.
  ///
  /// @throws std::invalid_argument  "invalid stoul argument" when the four characters begin with no hexadecimal digit
  static std::wstring FromEscapedString(const std::wstring& text);
  static std::wstring FromEscapedString(std::wstring&& text);

 protected:
  static bool IsNonPrintingCharacter(wchar_t c) noexcept;

  /// Writes the escape of a masked or non-printing character at `out[pos]`, where `out` grows as needed, and moves
  /// `pos` behind it; false for any other character.
  static bool AppendEscapedCharacter(wchar_t c, std::wstring& out, std::size_t& pos);
  /// As `AppendEscapedCharacter`, always with six characters.
  static void EncodeNonPrintCharacter(std::wstring& out, std::size_t& pos, wchar_t c);

  /// @throws std::logic_error  "ToEscapedString: wrong length calculation." when the two differ
  static void VerifyOutputLength(std::size_t expected, std::size_t written);
};

}  // namespace Zelto::Utilities
