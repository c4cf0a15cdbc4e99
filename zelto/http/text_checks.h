/// @file
/// What text for libcurl must not hold. Not installed.
#pragma once

#include <string_view>

namespace Zelto::Utilities {

/// @throws Win32Exception  `what` + " must not hold CR, LF or U+0000" (87) when the text does
void RefuseLineBreaks(std::string_view what, std::string_view text);

}  // namespace Zelto::Utilities
