/// @file
/// What the tests of threads count and wait on.
#pragma once

#include <chrono>
#include <concepts>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace Zelto::Testing {

/// How long a test waits for what must come. Nothing takes that long; a slow machine may.
inline constexpr std::chrono::seconds kLimit{60};

/// Waits for what other threads bring about.
template <class Condition>
bool Eventually(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + kLimit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

/// What threads count, each time with a number of its own if they like, and tests wait for.
class Counter {
 public:
  void Add(unsigned int id = 0) {
    const std::lock_guard lock(mutex_);
    ids_.push_back(id);
    changed_.notify_all();
  }
  int Value() const { return static_cast<int>(Ids().size()); }
  std::vector<unsigned int> Ids() const {
    const std::lock_guard lock(mutex_);
    return ids_;
  }
  bool WaitFor(std::integral auto count, std::chrono::milliseconds limit = kLimit) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return std::cmp_greater_equal(ids_.size(), count); });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<unsigned int> ids_;
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
