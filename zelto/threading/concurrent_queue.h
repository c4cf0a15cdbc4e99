/// @file
/// A queue between threads.
#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

namespace Zelto::Utilities {

/// A queue without a limit, first in, first out across all threads that push. Any thread may call it; nothing blocks
/// but for the time of another call.
template <class T>
class ConcurrentQueue {
 public:
  /// Adds at the back. @return how many elements there are then
  /// @throws std::bad_alloc  the queue is unchanged
  std::size_t Push(T element) {
    const std::lock_guard lock(lock_);
    elements_.push_back(std::move(element));
    return elements_.size();
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

  std::size_t Size() const {
    const std::lock_guard lock(lock_);
    return elements_.size();
  }

 private:
  mutable std::mutex lock_;
  std::deque<T> elements_;
};

}  // namespace Zelto::Utilities
