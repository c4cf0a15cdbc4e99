/// @file
/// A queue between threads.
#pragma once

#include <deque>
#include <mutex>
#include <utility>

namespace Zelto::Utilities {

/// A queue without a limit, first in, first out across all threads that push. Any thread may call it; nothing blocks
/// but for the time of another call.
template <class T>
class ConcurrentQueue {
 public:
  /// Adds at the back. @throws std::bad_alloc the queue is unchanged then
  void Push(T element) {
    const std::lock_guard lock(lock_);
    elements_.push_back(std::move(element));
  }

  /// Takes the front element. @return false when there is none; `element` is unchanged then
  bool TryPop(T& element) {
    const std::lock_guard lock(lock_);
    if (elements_.empty()) {
      return false;
    }
    element = std::move(elements_.front());
    elements_.pop_front();
    return true;
  }

  bool IsEmpty() const {
    const std::lock_guard lock(lock_);
    return elements_.empty();
  }

 private:
  mutable std::mutex lock_;
  std::deque<T> elements_;
};

}  // namespace Zelto::Utilities
