/// @file
/// The event of a pool's workers.
#pragma once

#include <zelto/export.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace Zelto::Utilities {

/// A manual-reset event that wakes no more threads than there is work for.
///
/// Every thread that waits when it is set is let go, even if it is reset at once. But one that is let go sleeps on
/// until there is work for it or its time is up, as if the system were slow to wake it: so a signal for one task does
/// not set all workers against each other. Which of the threads that wait is woken is open.
///
/// Any thread may call it; it must not be destroyed while one does.
class ZELTO_API WorkSignal {
 public:
  WorkSignal() = default;  ///< not signalled
  WorkSignal(const WorkSignal&) = delete;
  WorkSignal& operator=(const WorkSignal&) = delete;

  /// Signals, and wakes up to `wanted` of the threads that are let go now or were before. Says nothing twice: threads
  /// that are on their way already do not count.
  void Set(std::size_t wanted);

  void Reset() noexcept;

  /// Waits until the event is signalled, for at most `timeout_ms` milliseconds on the monotonic clock.
  ///
  /// @return true when it was signalled, false when the time was up
  bool Wait(std::uint32_t timeout_ms);

 private:
  std::atomic<bool> signalled_{false};
  std::atomic<std::size_t> let_go_{0};  // of those asleep, how many are let go and not woken; changes under lock_
  std::mutex lock_;
  std::condition_variable woken_;
  std::size_t asleep_ = 0;  // guarded by lock_, as is the next
  std::size_t calls_ = 0;   // wake-ups that no thread has taken yet: asleep_ >= let_go_ + calls_
};

}  // namespace Zelto::Utilities
