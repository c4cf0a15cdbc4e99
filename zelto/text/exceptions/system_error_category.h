/// @file
/// The error category of Win32 codes.
#pragma once

#include <zelto/export.h>

#include <system_error>

namespace Zelto::Utilities {

/// The category of the library's error codes: Win32 codes on both targets, so not `std::system_category()`.
///
/// Its name is "system". It has short English texts for the codes that the library and work with files meet, the same
/// on both targets and in every locale; any other code is "unknown error". Codes with a counterpart among the generic
/// conditions are equal to it: `e.code() == std::errc::no_such_file_or_directory` holds for the codes 2 and 3.
ZELTO_API const std::error_category& SystemErrorCategory() noexcept;

}  // namespace Zelto::Utilities
