#include "zelto/threading/work_signal.h"

#include <algorithm>
#include <chrono>

namespace Zelto::Utilities {

void WorkSignal::Set(std::size_t wanted) {
  // Nobody falls asleep while it is signalled, and whoever resets it afterwards sees what was done under a lock before
  // this call, as work is added.
  if (signalled_ && (wanted == 0 || let_go_ == 0)) {
    return;
  }
  std::size_t woken = 0;
  {
    const std::lock_guard lock(lock_);
    if (!signalled_) {
      signalled_ = true;
      let_go_ = asleep_ - calls_;
    }
    woken = std::min<std::size_t>(wanted, let_go_);
    let_go_ -= woken;
    calls_ += woken;
  }
  for (; woken > 0; --woken) {
    woken_.notify_one();
  }
}

void WorkSignal::Reset() noexcept {
  signalled_ = false;
}

bool WorkSignal::Wait(std::uint32_t timeout_ms) {
  if (signalled_) {
    return true;
  }
  std::unique_lock lock(lock_);
  if (signalled_) {
    return true;
  }
  ++asleep_;
  const bool called = woken_.wait_for(lock, std::chrono::milliseconds(timeout_ms), [this] { return calls_ > 0; });
  --asleep_;
  if (called) {
    --calls_;
    return true;
  }
  if (let_go_ > 0) {
    --let_go_;
    return true;
  }
  return false;
}

}  // namespace Zelto::Utilities
