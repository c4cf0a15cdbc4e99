/// @file
/// `errno` and the Win32 code that stands for it. Not installed.
#pragma once

#include "zelto/platform/errors.h"

namespace Zelto::Platform {

/// The Win32 code for an `errno`; 31 (ERROR_GEN_FAILURE) for one without a counterpart.
ErrorCode CodeFromErrno(int error) noexcept;

}  // namespace Zelto::Platform
