/// @file
/// Writing one value by a printf conversion. Not installed.
#pragma once

#include "zelto/text/printf_spec.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// The value of one conversion.
struct PrintfValue {
  /// A number that is not real, a character, or a pointer; what the size does not cover is ignored.
  std::uint64_t bits = 0;
  double real = 0;
};

/// Appends characters as units of UTF-16.
///
/// @return  false on a character above U+10FFFF
bool AppendUnits(std::wstring& target, std::wstring_view text);

/// Appends `value` as `spec` says. Widths and precisions given by arguments must have been set.
///
/// @return  false when a limit of `spec` is passed or a character is above U+10FFFF
bool AppendField(std::wstring& target, const PrintfSpec& spec, const PrintfValue& value);

}  // namespace Zelto::Utilities
