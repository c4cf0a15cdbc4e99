/// @file
/// What the tests of threads count and wait on.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Zelto::Testing {

/// How long a test waits for what must come. Nothing takes that long; a slow machine may.
inline constexpr std::chrono::seconds kLimit{60};

/// A number that threads raise and tests wait for.
class Counter {
 public:
  void Add() {
    const std::lock_guard lock(mutex_);
    ++value_;
    changed_.notify_all();
  }
  int Value() {
    const std::lock_guard lock(mutex_);
    return value_;
  }
  bool WaitFor(int value, std::chrono::milliseconds limit = kLimit) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return value_ >= value; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int value_ = 0;
};

/// A place in which a callback stays until it is let go.
class Gate {
 public:
  void Pass() {
    entered.Add();
    opened_.WaitFor(1);
    left.Add();
  }
  void Open() { opened_.Add(); }

  Counter entered;
  Counter left;

 private:
  Counter opened_;
};

}  // namespace Zelto::Testing
