#include "zelto/platform/timer_queue.h"

#include "zelto/platform/modules.h"

#include <windows.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <vector>

namespace Zelto::Platform {
namespace {

class WindowsTimerQueue final : public TimerQueue {
 public:
  WindowsTimerQueue() noexcept : queue_(::CreateTimerQueue()) {}
  // The timers go first, one by one: deleting a queue that still has a periodic one hung now and then under Wine.
  ~WindowsTimerQueue() override {
    for (const HANDLE timer : timers_) {
      ::DeleteTimerQueueTimer(queue_, timer, INVALID_HANDLE_VALUE);
    }
    if (queue_ != nullptr) {
      ::DeleteTimerQueueEx(queue_, INVALID_HANDLE_VALUE);
    }
  }

  bool IsValid() const noexcept { return queue_ != nullptr; }

  ErrorCode CreateTimer(void*& timer, Callback callback, void* parameter, std::uint32_t due_ms,
                        std::uint32_t period_ms) noexcept override {
    try {
      const std::lock_guard guard(lock_);
      timers_.push_back(nullptr);
      if (!::CreateTimerQueueTimer(&timers_.back(), queue_, callback, parameter, due_ms, period_ms,
                                   WT_EXECUTEDEFAULT)) {
        const ErrorCode error = ::GetLastError();
        timers_.pop_back();
        return error;
      }
      timer = timers_.back();
      return kSuccess;
    } catch (const std::bad_alloc&) {
      return kNotEnoughMemory;
    }
  }

  ErrorCode DeleteTimer(void* timer) noexcept override {
    {
      // Forgotten first: once deleted, the handle may be another timer's.
      const std::lock_guard guard(lock_);
      timers_.erase(std::remove(timers_.begin(), timers_.end(), timer), timers_.end());
    }
    return ::DeleteTimerQueueTimer(queue_, timer, INVALID_HANDLE_VALUE) ? kSuccess : ::GetLastError();
  }

 private:
  HANDLE queue_;
  std::mutex lock_;
  std::vector<HANDLE> timers_;
};

}  // namespace

ErrorCode TimerQueue::Create(std::shared_ptr<TimerQueue>& queue) noexcept {
  PinModule();
  try {
    auto made = std::make_shared<WindowsTimerQueue>();
    if (!made->IsValid()) {
      return ::GetLastError();
    }
    queue = std::move(made);
    return kSuccess;
  } catch (const std::bad_alloc&) {
    return kNotEnoughMemory;
  }
}

}  // namespace Zelto::Platform
