/// @file
/// The lock of the classes in this library.
#pragma once

#include <mutex>

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
  void Lock() { mutex_.lock(); }
  /// Releases what the same thread locked.
  void Unlock() { mutex_.unlock(); }

  void lock() { mutex_.lock(); }                 ///< as `Lock`
  void unlock() { mutex_.unlock(); }             ///< as `Unlock`
  bool try_lock() { return mutex_.try_lock(); }  ///< takes the lock if that needs no waiting

 private:
  std::recursive_mutex mutex_;
};

}  // namespace Zelto::Utilities
