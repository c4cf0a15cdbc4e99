#include "zelto/threading/manual_reset_event.h"

#include "zelto/platform/events.h"

#include <chrono>

namespace Zelto::Utilities {

void ManualResetEvent::Set() {
  // Nobody waits on an event that is set. To write it again, and to read it when it is reset, is what lets whoever
  // resets it see what was done before this call.
  bool set = true;
  if (signalled_.compare_exchange_strong(set, true)) {
    return;
  }
  {
    const std::lock_guard lock(lock_);
    signalled_ = true;
    ++times_set_;
  }
  set_.notify_all();
}

void ManualResetEvent::Reset() noexcept {
  signalled_.exchange(false);
}

bool ManualResetEvent::Wait(std::uint32_t timeout_ms) {
  if (signalled_) {
    return true;
  }
  if (timeout_ms == 0) {
    return false;
  }
  std::unique_lock lock(lock_);
  const auto let_go = [this, before = times_set_] { return signalled_ || times_set_ != before; };
  if (timeout_ms == Platform::kInfinite) {
    set_.wait(lock, let_go);
    return true;
  }
  return set_.wait_for(lock, std::chrono::milliseconds(timeout_ms), let_go);
}

}  // namespace Zelto::Utilities
