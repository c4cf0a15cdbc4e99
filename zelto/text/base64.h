/// @file
/// Wide text as Base64 of its UTF-8 bytes.
#pragma once

#include <zelto/export.h>

#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// Turns wide text into Base64 text over its UTF-8 bytes, and back. No state; any thread may call.
///
/// The alphabet is the standard one (A-Z, a-z, 0-9, "+", "/") with "=" up to a multiple of four characters, as
/// `CryptBinaryToStringW` writes it with `CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF`. The codec is the library's own on
/// every target, so that the same text is accepted everywhere.
class ZELTO_API Base64 {
 public:
  /// Encodes a text in one line, without line breaks. An empty text gives an empty result.
  ///
  /// @throws std::range_error  "bad conversion" when the text is not UTF-16 (a lone surrogate)
  ///
  /// Linear in the text. Example: `Encode(L"a")` is `YQ==`, `Encode(L"\u00E9")` is `w6k=`.
  static std::wstring Encode(std::wstring_view text);

  /// Decodes Base64 text and reads the bytes as UTF-8, as `StringUtilities::Utf8ToUtf16` does: up to the first zero
  /// byte, one unit for every code point.
  ///
  /// Blanks, tabs, carriage returns and line feeds are skipped wherever they stand; text of nothing else is an empty
  /// text. The padding must be complete and nothing but those four may follow it. The bits of the last character that
  /// belong to no byte may have any value: `YQ==` and `YR==` are the same text.
  ///
  /// @throws std::runtime_error  "Cannot decode base64 string" on any other text
  /// @throws std::range_error    "bad conversion" when the bytes are not UTF-8
  ///
  /// Linear in the text.
  static std::wstring Decode(std::wstring_view base64);

 private:
  static std::string WStringToString(std::wstring_view text);
  static std::wstring StringToWString(std::string_view bytes);
};

}  // namespace Zelto::Utilities
