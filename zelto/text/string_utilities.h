/// @file
/// Work with strings: editing, tests, formatting, and conversion between UTF-8, UTF-16 and bytes.
#pragma once

#include <zelto/export.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Utilities {

/// Operations on strings.
///
/// A wide string holds one UTF-16 code unit per `wchar_t`. Comparison is exact, unit by unit; characters are classified
/// and mapped by ASCII rules, whatever the locale. Any argument may be a part of the string that is edited. An
/// operation that throws leaves its targets unchanged. All are re-entrant.
class ZELTO_API StringUtilities {
 public:
  StringUtilities() = delete;

  /// Whether `text` begins with `prefix`; an empty prefix always does.
  static bool StartsWith(std::wstring_view text, std::wstring_view prefix) noexcept;

  /// Whether `text` ends with `suffix`; an empty suffix always does.
  static bool EndsWith(std::wstring_view text, std::wstring_view suffix) noexcept;

  /// Whether every unit is one of 0-9; true for an empty text.
  static bool VerifyContainsOnlyNumbers(std::wstring_view text) noexcept;

  /// Whether every unit is one of 0-9, a-f, A-F; true for an empty text. No "0x" is accepted.
  static bool VerifyContainsOnlyHexNumbers(std::wstring_view text) noexcept;

  /// Appends `suffix` unless `text` ends with it. A suffix exactly one unit longer than the text is not appended
  /// either: L"a" stays with L"ab", while L"" becomes L"ab".
  static void AddAtEndIfNotExists(std::wstring& text, std::wstring_view suffix);

  /// Replaces every occurrence of `search` from left to right. What was inserted is not searched again. Nothing happens
  /// when `text` or `search` is empty.
  static void Replace(std::wstring& text, std::wstring_view search, std::wstring_view replacement);

  /// Replaces the first occurrence of `search` until there is none, so also those that a replacement formed: L"aab"
  /// with L"ab" for L"b" becomes L"b". Nothing happens when `text` or `search` is empty.
  ///
  /// @throws std::runtime_error  "Replace shouldn't contain the search string for replace all" when it does
  /// @throws std::length_error   when the replacements feed each other and the text grows without end, as with L"bbaa"
  ///                             for L"ab" in L"aab": past 16 Mi units more than |text| * (|replacement| + 1)
  static void ReplaceAll(std::wstring& text, std::wstring_view search, std::wstring_view replacement);

  /// Replaces `search` at the beginning, once. Nothing happens when `text` or `search` is empty.
  static void ReplaceAtBegin(std::wstring& text, std::wstring_view search, std::wstring_view replacement);

  /// Replaces `search` at the end, once. Nothing happens when `text` or `search` is empty.
  ///
  /// @throws std::out_of_range  "invalid string position" when `search` is exactly one unit longer than `text`
  static void ReplaceAtEnd(std::wstring& text, std::wstring_view search, std::wstring_view replacement);

  /// Strips the units of `set` from both ends, from the left or from the right.
  static void Trim(std::wstring& text, std::wstring_view set);
  static void TrimLeft(std::wstring& text, std::wstring_view set);
  static void TrimRight(std::wstring& text, std::wstring_view set);

  /// Maps the letters A-Z to a-z, or a-z to A-Z; other units stay.
  static void ToLower(std::wstring& text) noexcept;
  static void ToUpper(std::wstring& text) noexcept;
  static void ToUpper(std::string& text) noexcept;

  /// The first `count` units, or the whole text when it is shorter.
  static std::wstring Left(std::wstring_view text, std::size_t count);

  /// The units from `start` to the end; none when `start` is the length.
  ///
  /// @throws std::out_of_range  "invalid string position" when `start` is greater
  static std::wstring Mid(std::wstring_view text, std::size_t start);

  /// The parts between the separators; n separators make n + 1 parts, empty ones included. An empty separator splits
  /// nothing.
  static std::vector<std::wstring> Split(std::wstring_view text, std::wstring_view separator);

  /// Resizes the text to `length` units, new ones being zero, and returns its first unit for the caller to fill. Valid
  /// until the text is changed otherwise. `ReleaseBuffer` is its counterpart.
  static wchar_t* GetBuffer(std::wstring& text, std::size_t length);

  /// Cuts the text before its first zero unit.
  static void ReleaseBuffer(std::wstring& text);

  /// Formats as printf does for wide strings on Windows, the same on both targets and in every locale.
  ///
  /// `%s` `%c` take wide text, `%S` `%C` narrow text; `%hs` `%hS` narrow, `%ls` `%lS` `%ws` wide. Narrow bytes become
  /// units of the same values; a null pointer prints "(null)". Numbers are `%d %i %u %o %x %X` with the sizes `hh`,
  /// `h`, `I32`, `ll`, `I64` and `j` (64 bits), `z`, `t` and `I` (as wide as a pointer), and `l`, which is 32 bits on
  /// Linux, too: the value of a longer `long` is cut. Reals are `%e %f %g %a` and their capitals; `long double` (`L`)
  /// is rounded to `double` first. `%p` is all digits of a pointer in capitals. Flags, widths and precisions are
  /// printf's, also `*`; the flag 0 fills in front of text, too.
  ///
  /// @param format     zero-terminated; null is a bad format
  /// @param ...        what the format asks for; as with printf, nobody checks that
  /// @return           the text up to its first zero unit; empty for a bad format: an unknown conversion or size, a
  ///                   "%" at the end, a width or the precision of a number above 65,535, a character above U+10FFFF
  ///
  /// The format is checked whole before an argument is looked at. `%n` takes its pointer and writes nothing.
  static std::wstring SafeSprintf(const wchar_t* format, ...);

  /// Formats as the message formatter of Windows does (`FormatMessageW` from a string), the same on both targets.
  ///
  /// `%1` to `%99` are the arguments as wide strings, `%1!d!` by a printf conversion as in `SafeSprintf` (reals are
  /// not possible, as in the system), `%1!*.*s!` takes a width, a precision and the text from three arguments in a row:
  /// the text then counts as the one before, so the next is `%3`, and behind `%1!*d!` it is `%2`. `%%`, `%.`, `%!` and
  /// `% ` are the character itself, `%n` is a line break of CR LF, `%r` a CR, `%t` a tab, `%b` a blank; `%0` ends the
  /// message; another letter stands for itself. A line break in the format becomes CR LF.
  ///
  /// @param ...        integers, characters and pointers, each at most as wide as a pointer; those that no insert names
  ///                   are passed over. There must be as many as the greatest number named.
  /// @return           the text; empty for a bad format and for a text longer than 4095 units
  static std::wstring FormatMessageW(const wchar_t* format, ...);

  /// "0x" and the 32 bits as eight upper-case hexadecimal digits: 255 gives "0x000000FF", -1 "0xFFFFFFFF".
  static std::wstring ToHex(std::int32_t value);
  static std::string ToHexStr(std::int32_t value);

  /// Encodes UTF-16 as UTF-8, a surrogate pair as one sequence of four bytes. No byte-order mark. U+0000 is a character
  /// like any other. Where `wchar_t` has 32 bits, a unit above 0xFFFF counts as its surrogate pair.
  ///
  /// @throws std::range_error  "bad conversion" on a lone surrogate or a unit above 0x10FFFF
  ///
  /// Linear. Example: `Utf16ToUtf8(L"\u00E9")` is the bytes C3 A9.
  static std::string Utf16ToUtf8(std::wstring_view text);
  /// The same in place of what `target` holds, which is left as it is when this throws. Short text uses its memory.
  static void Utf16ToUtf8(std::wstring_view text, std::string& target);

  /// Decodes UTF-8 up to its first zero byte or the end. Each character gives one unit: one above U+FFFF gives 0xE000
  /// plus its low 12 bits, a private-use unit that never looks like a quotation mark or a backslash. So decoding what
  /// `Utf16ToUtf8` made of a surrogate pair does not give the pair back.
  ///
  /// @throws std::range_error  "bad conversion" on anything that is not well-formed UTF-8: overlong forms, encoded
  ///                           surrogates, characters above U+10FFFF, truncated sequences
  static std::wstring Utf8ToUtf16(std::string_view text);
  /// The same in place of what `target` holds, which is left as it is when this throws. Short text uses its memory.
  static void Utf8ToUtf16(std::string_view text, std::wstring& target);

  /// The units up to the first zero unit or the end as single bytes of the same values, 0x01 to 0xFF.
  ///
  /// @throws std::range_error  "bad conversion" on a unit above 0xFF
  static std::string ToAscii(std::wstring_view text);
};

}  // namespace Zelto::Utilities
