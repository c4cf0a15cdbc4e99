/// @file
/// Full names of pipes. Not installed.
#pragma once

#include <string>

namespace Zelto::Utilities {

/// The name with the prefix `\\.\pipe\` in front, unless it begins with that already.
///
/// @throws std::runtime_error  "Named pipe name should not be empty"
std::wstring FullPipeName(const std::wstring& name);

}  // namespace Zelto::Utilities
