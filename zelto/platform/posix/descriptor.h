/// @file
/// File descriptors as handles. Not installed.
#pragma once

#include <cstdint>

namespace Zelto::Platform {

/// A descriptor as the pointer that `SharedHandle::Get` returns, and back.
inline void* HandleFromDescriptor(int descriptor) noexcept {
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor));
}
inline int DescriptorFromHandle(void* handle) noexcept {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle));
}

/// Moves a descriptor of 0, 1 or 2 to a higher number, since 0 as a handle would be null and a stray standard stream
/// must never reach a peer. Takes ownership of the argument. @return the descriptor, or -1 with `errno` set
int AvoidStandardStreams(int descriptor) noexcept;

}  // namespace Zelto::Platform
