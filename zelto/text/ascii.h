/// @file
/// Character classes of ASCII, the same on both targets and under every locale. Not installed.
#pragma once

namespace Zelto::Utilities::Ascii {

/// '0' to '9'.
constexpr bool IsDigit(wchar_t unit) noexcept {
  return unit >= L'0' && unit <= L'9';
}

/// '0' to '9', 'a' to 'f' and 'A' to 'F'.
constexpr bool IsHexDigit(wchar_t unit) noexcept {
  return IsDigit(unit) || (unit >= L'a' && unit <= L'f') || (unit >= L'A' && unit <= L'F');
}

/// Blank, tab, line feed, vertical tab, form feed and carriage return.
constexpr bool IsSpace(wchar_t unit) noexcept {
  return unit == L' ' || (unit >= L'\t' && unit <= L'\r');
}

/// The value of a hexadecimal digit, 0 to 15; -1 for any other unit.
constexpr int HexDigitValue(wchar_t unit) noexcept {
  if (IsDigit(unit)) {
    return static_cast<int>(unit - L'0');
  }
  if (unit >= L'a' && unit <= L'f') {
    return static_cast<int>(unit - L'a') + 10;
  }
  if (unit >= L'A' && unit <= L'F') {
    return static_cast<int>(unit - L'A') + 10;
  }
  return -1;
}

/// 'A' to 'Z' in lower case, anything else as it is.
template <typename Unit>
constexpr Unit ToLower(Unit unit) noexcept {
  return unit >= Unit{'A'} && unit <= Unit{'Z'} ? static_cast<Unit>(unit + ('a' - 'A')) : unit;
}

/// 'a' to 'z' in upper case, anything else as it is.
template <typename Unit>
constexpr Unit ToUpper(Unit unit) noexcept {
  return unit >= Unit{'a'} && unit <= Unit{'z'} ? static_cast<Unit>(unit - ('a' - 'A')) : unit;
}

}  // namespace Zelto::Utilities::Ascii
