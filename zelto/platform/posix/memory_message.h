/// @file
/// Messages too large for a packet: sealed memory files. Not installed.
#pragma once

#include "zelto/platform/errors.h"
#include "zelto/platform/posix/descriptor.h"

#include <cstdint>

namespace Zelto::Platform {

/// Makes a memory file with a message's bytes, sealed for good against every change.
ErrorCode MakeMemoryMessage(const void* data, std::uint32_t size, UniqueDescriptor& file) noexcept;

/// Checks what a peer sent: a memory file, sealed against every change, of 1 to 0xFFFFFFFF bytes.
///
/// @param[out] size  its bytes @return 0 or `kInvalidData`
ErrorCode CheckMemoryMessage(int file, std::uint32_t& size) noexcept;

/// Copies `size` bytes from `offset` on; they must be there. @return 0 or the error
ErrorCode ReadMemoryMessage(int file, std::uint32_t offset, void* buffer, std::uint32_t size) noexcept;

}  // namespace Zelto::Platform
