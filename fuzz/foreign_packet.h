/// @file
/// What only a peer that does not use the library sends.
#pragma once

#include "fuzz/fuzz_target.h"
#include "zelto/platform/shared_handle.h"

#include <cstdint>

namespace Zelto::Fuzz {

/// Sends `payload` on a client's end with descriptors that the bits of `shape` choose: none to several, memory files
/// with all seals, some or none, and others. Nothing on Windows, where a pipe carries bytes only.
void SendForeignPacket(const Utilities::SharedHandle& pipe, std::uint8_t shape, Bytes payload);

}  // namespace Zelto::Fuzz
