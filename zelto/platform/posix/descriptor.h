/// @file
/// File descriptors as handles. Not installed.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <utility>

namespace Zelto::Platform {

/// A descriptor as the pointer that `SharedHandle::Get` returns, and back.
inline void* HandleFromDescriptor(int descriptor) noexcept {
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor));  // NOLINT(performance-no-int-to-ptr)
}
inline int DescriptorFromHandle(void* handle) noexcept {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle));
}

/// Moves a descriptor of 0, 1 or 2 to a higher number, since 0 as a handle would be null and a stray standard stream
/// must never reach a peer. Takes ownership of the argument. @return the descriptor, or -1 with `errno` set
int AvoidStandardStreams(int descriptor) noexcept;

/// Owns one descriptor, or none (-1). Closing keeps `errno`.
class UniqueDescriptor {
 public:
  UniqueDescriptor() noexcept = default;
  explicit UniqueDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  UniqueDescriptor(UniqueDescriptor&& other) noexcept : descriptor_(other.Release()) {}
  UniqueDescriptor& operator=(UniqueDescriptor&& other) noexcept {
    Reset(other.Release());
    return *this;
  }
  ~UniqueDescriptor() { Reset(); }

  int Get() const noexcept { return descriptor_; }
  explicit operator bool() const noexcept { return descriptor_ >= 0; }
  int Release() noexcept { return std::exchange(descriptor_, -1); }
  void Reset(int descriptor = -1) noexcept;

 private:
  int descriptor_ = -1;
};

}  // namespace Zelto::Platform
