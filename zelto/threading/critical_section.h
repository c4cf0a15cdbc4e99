/// @file
/// The lock of the classes in this library.
#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <thread>

namespace Zelto::Utilities {

/// A recursive lock: the thread that holds it may take it again and must release it as often.
///
/// Works with `std::lock_guard` and `std::unique_lock`. One object may be used on any thread; it must not be destroyed
/// while it is held.
class CriticalSection {
 public:
  CriticalSection() = default;
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  /// Waits until the calling thread has the lock.
  void Lock() {
    const std::thread::id self = std::this_thread::get_id();
    if (owner_.load(std::memory_order_relaxed) != self) {
      mutex_.lock();
      owner_.store(self, std::memory_order_relaxed);
    }
    ++depth_;
  }

  /// Releases what the same thread locked.
  void Unlock() {
    if (--depth_ == 0) {
      owner_.store(std::thread::id(), std::memory_order_relaxed);
      mutex_.unlock();
    }
  }

  void lock() { Lock(); }      ///< as `Lock`
  void unlock() { Unlock(); }  ///< as `Unlock`
  /// Takes the lock if that needs no waiting.
  bool try_lock() {
    const std::thread::id self = std::this_thread::get_id();
    if (owner_.load(std::memory_order_relaxed) != self) {
      if (!mutex_.try_lock()) {
        return false;
      }
      owner_.store(self, std::memory_order_relaxed);
    }
    ++depth_;
    return true;
  }

 private:
  // Not std::recursive_mutex, whose memory GCC's runtime for Windows never gives back.
  std::mutex mutex_;
  std::atomic<std::thread::id> owner_{};  // none while nobody holds the lock; only a thread itself writes its own id
  std::size_t depth_ = 0;                 // for the owner alone
};

}  // namespace Zelto::Utilities
