/// @file
/// What a shared handle holds. Not installed: only this room looks inside.
#pragma once

#include <atomic>
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

  /// Linux: what a thread did before it signalled an event happens before what a thread does that saw the signal. A
  /// descriptor gives no such order in the language's eyes.
  void Publish() noexcept { signals_.fetch_add(1, std::memory_order_release); }
  void Observe() const noexcept { static_cast<void>(signals_.load(std::memory_order_acquire)); }

 private:
  std::atomic<std::uint32_t> signals_{0};
};

/// Owns a plain handle. Each body has its own. @throws std::bad_alloc after closing the handle
std::shared_ptr<HandleState> AdoptHandle(void* handle);

/// The value that systems use beside null for "no handle".
inline void* InvalidHandle() noexcept {
  return reinterpret_cast<void*>(~static_cast<std::uintptr_t>(0));  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace Zelto::Platform
