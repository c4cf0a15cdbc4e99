/// @file
/// What a shared handle holds. Not installed: only this room looks inside.
#pragma once

#include <cstdint>
#include <memory>

namespace Zelto::Platform {

class PipeEnd;

/// One owned operating-system handle; a body's own kinds close it when they are destroyed.
class HandleState {
 public:
  HandleState() noexcept = default;
  virtual ~HandleState() = default;
  HandleState(const HandleState&) = delete;
  HandleState& operator=(const HandleState&) = delete;

  /// A `HANDLE` on Windows, a file descriptor cast to a pointer on Linux.
  virtual void* Native() const noexcept = 0;

  /// Linux: what a message pipe's end keeps beside its descriptor; null when this is none. Windows: always null.
  virtual PipeEnd* Pipe() noexcept { return nullptr; }
};

/// Owns a plain handle. Each body has its own. @throws std::bad_alloc after closing the handle
std::shared_ptr<HandleState> AdoptHandle(void* handle);

/// The value that systems use beside null for "no handle".
inline void* InvalidHandle() noexcept {
  return reinterpret_cast<void*>(~static_cast<std::uintptr_t>(0));
}

}  // namespace Zelto::Platform
