/// @file
/// Shared ownership of an operating-system handle.
#pragma once

#include <zelto/export.h>

#include <memory>

namespace Zelto::Platform {
class HandleState;
}

namespace Zelto::Utilities {

/// A reference-counted owner of an operating-system handle, closed when the last owner goes.
///
/// Copies share one handle. Different copies may be used on different threads at the same time; one object may not be
/// changed on one thread while another uses it (as with `std::shared_ptr`).
class ZELTO_API SharedHandle {
 public:
  /// Holds nothing: null on both targets.
  SharedHandle() noexcept = default;

  /// Takes ownership of a handle. Null and the invalid value (all bits set) give an empty owner.
  ///
  /// @param handle  Windows: a `HANDLE`, closed by `CloseHandle`. Linux: a file descriptor cast to a pointer, closed by
  ///                `close`; never 0, since 0 is null here.
  /// @throws std::bad_alloc  the handle has been closed then
  explicit SharedHandle(void* handle);

  /// Shares a state that this library's platform room made.
  explicit SharedHandle(std::shared_ptr<Platform::HandleState> state) noexcept;

  /// The handle: a `HANDLE` on Windows, a file descriptor cast to a pointer on Linux; null when empty. It stays valid
  /// while any owner lives.
  void* Get() const noexcept;

  /// True when a handle is held.
  bool IsValid() const noexcept { return state_ != nullptr; }
  explicit operator bool() const noexcept { return IsValid(); }

  /// Lets go of the handle; it closes if this was the last owner.
  void Reset() noexcept { state_.reset(); }

  /// Number of owners, this one included; 0 when empty. Exact only while no other thread copies.
  long UseCount() const noexcept { return state_.use_count(); }

  friend bool operator==(const SharedHandle& a, const SharedHandle& b) noexcept { return a.state_ == b.state_; }

  /// What stands behind the handle; for the platform room.
  const std::shared_ptr<Platform::HandleState>& State() const noexcept { return state_; }

 private:
  std::shared_ptr<Platform::HandleState> state_;
};

}  // namespace Zelto::Utilities
