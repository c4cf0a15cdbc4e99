/// @file
/// Timer queues: callbacks on the system's threads after a time, once or again and again.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/errors.h>
#include <zelto/platform/events.h>

#include <cstdint>
#include <memory>

namespace Zelto::Platform {

/// A set of timers that share threads. Any thread may call it, callbacks too.
///
/// The thread that runs a callback belongs to the queue, not to the caller. An exception that leaves a callback ends
/// the process. A slow callback holds up no other timer.
class ZELTO_API TimerQueue {
 public:
  /// What a timer runs. `fired` is 1.
  using Callback = void (*)(void* parameter, unsigned char fired);

  /// Makes a queue, and keeps this module loaded from then on, since its code runs on the queue's threads.
  ///
  /// Windows: `CreateTimerQueue`. Linux: threads of this queue; one keeps the time and runs what is due, and another
  /// takes its place meanwhile. A thread is added when none is idle, up to 500, and they stay until the queue goes.
  /// @param[out] queue  changed only on success
  /// @return 0, or the system's error
  static ErrorCode Create(std::shared_ptr<TimerQueue>& queue) noexcept;

  /// Deletes the timers that are left and waits for callbacks in progress; so never run it inside a callback.
  ///
  /// Windows: `DeleteTimerQueueEx` with `INVALID_HANDLE_VALUE`.
  virtual ~TimerQueue() = default;
  TimerQueue(const TimerQueue&) = delete;
  TimerQueue& operator=(const TimerQueue&) = delete;

  /// Starts a timer.
  ///
  /// @param[out] timer  the timer's handle, for `DeleteTimer`. The first callback may run before it is set.
  /// @param due_ms      time to the first callback; 0 means at once, `kInfinite` never
  /// @param period_ms   time from one callback to the next; 0 means that there is only one
  ///
  /// A callback that is late is not lost. Late callbacks of one timer run beside each other on Windows, and one after
  /// the other on Linux.
  /// Windows: `CreateTimerQueueTimer` with default execution.
  /// @return 0, or the system's error
  virtual ErrorCode CreateTimer(void*& timer, Callback callback, void* parameter, std::uint32_t due_ms,
                                std::uint32_t period_ms) noexcept = 0;

  /// Deletes a timer and waits for its callbacks in progress; none begins afterwards. Waits for ever inside a callback
  /// of the same timer.
  ///
  /// Windows: `DeleteTimerQueueTimer` with `INVALID_HANDLE_VALUE`.
  /// @return 0, or the system's error
  virtual ErrorCode DeleteTimer(void* timer) noexcept = 0;

 protected:
  TimerQueue() noexcept = default;
};

}  // namespace Zelto::Platform
