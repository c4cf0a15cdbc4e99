/// @file
/// Wide paths as the system takes them. Not installed.
#pragma once

#include "zelto/platform/errors.h"

#include <string>
#include <string_view>

namespace Zelto::Platform {

/// Gives a wide path in UTF-8, a unit above 0xFFFF as the character it is.
///
/// @return 0; `kInvalidName` for a zero unit, a lone surrogate or a value above 0x10FFFF; `kNotEnoughMemory`
ErrorCode ToSystemPath(std::wstring_view path, std::string& result) noexcept;

}  // namespace Zelto::Platform
