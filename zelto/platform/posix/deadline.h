/// @file
/// A point in time on the monotonic clock that a wait may last until. Not installed.
#pragma once

#include "zelto/platform/events.h"

#include <poll.h>
#include <time.h>

#include <cstdint>

namespace Zelto::Platform {

/// Turns a time-out into what remains of it, across interrupted and repeated waits. A time-out of 0 or `kInfinite`
/// never asks the clock.
class Deadline {
 public:
  explicit Deadline(std::uint32_t timeout_ms) noexcept
      : timeout_ms_(timeout_ms),
        end_(NeedsClock() ? Now() + std::int64_t{timeout_ms} * kNanosecondsPerMillisecond : 0) {}

  /// Nothing of the time-out is left.
  bool Passed() const noexcept { return timeout_ms_ == 0 || (NeedsClock() && Now() >= end_); }

  /// What remains, for `ppoll`: null means no limit. At most `cap_ms` milliseconds when a cap is given.
  const timespec* Remaining(timespec& storage, std::uint32_t cap_ms = kInfinite) const noexcept {
    if (timeout_ms_ == kInfinite && cap_ms == kInfinite) {
      return nullptr;
    }
    std::int64_t left = NeedsClock() ? end_ - Now() : (timeout_ms_ == 0 ? 0 : INT64_MAX);
    if (cap_ms != kInfinite && left > std::int64_t{cap_ms} * kNanosecondsPerMillisecond) {
      left = std::int64_t{cap_ms} * kNanosecondsPerMillisecond;
    }
    left = left < 0 ? 0 : left;
    storage.tv_sec = left / kNanosecondsPerSecond;
    storage.tv_nsec = left % kNanosecondsPerSecond;
    return &storage;
  }

 private:
  static constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
  static constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

  bool NeedsClock() const noexcept { return timeout_ms_ != 0 && timeout_ms_ != kInfinite; }
  static std::int64_t Now() noexcept {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * kNanosecondsPerSecond + now.tv_nsec;
  }

  std::uint32_t timeout_ms_;
  std::int64_t end_;
};

}  // namespace Zelto::Platform
