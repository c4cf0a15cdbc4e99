/// @file
/// Percent-encoding by the rules of RFC 1738.
#pragma once

#include <zelto/export.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// The part of a URL that a text is encoded for: which units have a meaning of their own there and are encoded.
enum class UrlPart : std::uint32_t {
  Scheme = 0,         ///< nothing reserved
  UserInfo = 1,       ///< nothing reserved
  Host = 2,           ///< nothing reserved
  Path = 3,           ///< "/", ";" and "?"
  PathParameter = 4,  ///< "/", ";" and "?"
  Query = 5,          ///< "/", ";", "?" and "&"
  QueryName = 6,      ///< "/", ";", "?", "&" and "="
  QueryValue = 7,     ///< "/", ";", "?", "&" and "="
};

/// Percent-encodes wide text for a part of a URL. No state; any thread may call, also before `main`.
class ZELTO_API UrlEncoding {
 public:
  virtual ~UrlEncoding();

  /// Encodes a text. As "%" and two upper-case digits for every byte of its UTF-8 form goes each unit that is reserved
  /// for the part, is unsafe everywhere (blank, `<>"#%{}|\^~[]` and the grave accent), is a control, or is not ASCII;
  /// the others stay.
  ///
  /// Every UTF-16 unit is encoded by itself: a surrogate pair, and on Linux one unit above 0xFFFF, gives two sequences
  /// of three bytes. A lone surrogate is no error.
  ///
  /// An empty text gives an empty result, whatever the part.
  ///
  /// @throws std::out_of_range  "invalid map<K, T> key" when the text is not empty and the part is none of the eight
  /// @throws std::range_error   "bad conversion" on a unit above 0x10FFFF (Linux only)
  ///
  /// Linear in the text. Example: `Encode(L"a b&c", UrlPart::Query)` is `a%20b%26c`.
  static std::wstring Encode(std::wstring_view text, UrlPart part);

 protected:
  /// Appends the escapes of one unit's UTF-8 bytes, whether it needs them or not.
  /// @throws std::range_error  "bad conversion" on a unit above 0x10FFFF (Linux only)
  static void EncodeToBuffer(std::wstring& buffer, wchar_t unit);

  /// Whether a unit is printable ASCII, the blank included: 0x20 to 0x7E.
  static bool Rfc1738HasGraphic(wchar_t unit);

  /// Whether a unit has a meaning of its own in a part of a URL.
  /// @throws std::out_of_range  "invalid map<K, T> key" on a part that is none of the eight
  static bool Rfc1738IsReserved(wchar_t unit, UrlPart part);

  /// Whether a unit is encoded in every part.
  static bool Rfc1738IsUnsafe(wchar_t unit);
};

}  // namespace Zelto::Utilities
