/// @file
/// What text for libcurl must not hold. Not installed.
#pragma once

#include <algorithm>
#include <string_view>

namespace Zelto::Utilities {

/// Whether a text holds CR, LF or U+0000: it could end a line or itself before its end.
template <class Unit>
constexpr bool HasLineBreak(std::basic_string_view<Unit> text) noexcept {
  return std::any_of(text.begin(), text.end(),
                     [](Unit unit) { return unit == Unit{'\r'} || unit == Unit{'\n'} || unit == Unit{0}; });
}

/// @throws Win32Exception  `what` + " must not hold CR, LF or U+0000" (87)
[[noreturn]] void RefuseLineBreak(std::string_view what);

}  // namespace Zelto::Utilities
