#include "zelto/platform/timer_queue.h"

#include "zelto/platform/modules.h"

#include <windows.h>

#include <new>

namespace Zelto::Platform {
namespace {

class WindowsTimerQueue final : public TimerQueue {
 public:
  WindowsTimerQueue() noexcept : queue_(::CreateTimerQueue()) {}
  ~WindowsTimerQueue() override {
    if (queue_ != nullptr) {
      ::DeleteTimerQueueEx(queue_, INVALID_HANDLE_VALUE);
    }
  }

  bool IsValid() const noexcept { return queue_ != nullptr; }

  ErrorCode CreateTimer(void*& timer, Callback callback, void* parameter, std::uint32_t due_ms,
                        std::uint32_t period_ms) noexcept override {
    HANDLE handle = nullptr;
    if (!::CreateTimerQueueTimer(&handle, queue_, callback, parameter, due_ms, period_ms, WT_EXECUTEDEFAULT)) {
      return ::GetLastError();
    }
    timer = handle;
    return kSuccess;
  }

  ErrorCode DeleteTimer(void* timer) noexcept override {
    return ::DeleteTimerQueueTimer(queue_, timer, INVALID_HANDLE_VALUE) ? kSuccess : ::GetLastError();
  }

 private:
  HANDLE queue_;
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
