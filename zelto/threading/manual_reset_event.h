/// @file
/// An event inside the process.
#pragma once

#include <zelto/export.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace Zelto::Utilities {

/// A signal that stays until it is reset. Every thread that waits when it is set goes on, even if it is reset at once.
///
/// No handle of the system stands behind it: to look at it, to set it again and to reset it costs no system call. Any
/// thread may call it; it must not be destroyed while one does.
class ZELTO_API ManualResetEvent {
 public:
  ManualResetEvent() = default;  ///< not signalled
  ManualResetEvent(const ManualResetEvent&) = delete;
  ManualResetEvent& operator=(const ManualResetEvent&) = delete;

  /// Signals. Whoever resets the event later sees what was done before this call, even when it was set already.
  void Set();
  void Reset() noexcept;

  /// Waits until the event is signalled, for at most `timeout_ms` milliseconds (0 only looks, 0xFFFFFFFF waits without
  /// a limit). The time runs on the monotonic clock.
  ///
  /// @return true when it was signalled, false when the time was up
  bool Wait(std::uint32_t timeout_ms);

 private:
  std::atomic<bool> signalled_{false};
  std::mutex lock_;
  std::condition_variable set_;
  std::uint64_t times_set_ = 0;  // guarded by lock_; tells a waiting thread that it was let go
};

}  // namespace Zelto::Utilities
