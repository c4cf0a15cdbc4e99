/// @file
/// Writing to files, those in memory among them.
#pragma once

#include <sys/types.h>

#include <cstddef>

namespace Zelto::Platform {

/// `write`, begun again when a signal interrupts it. At the process's limit of file sizes (`RLIMIT_FSIZE`) it fails
/// with EFBIG and without SIGXFSZ, which would end the process.
ssize_t WriteToFile(int descriptor, const void* bytes, std::size_t count) noexcept;

}  // namespace Zelto::Platform
