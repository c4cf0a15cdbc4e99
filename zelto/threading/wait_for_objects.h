/// @file
/// Waits on one event or several.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/events.h>
#include <zelto/platform/shared_handle.h>

#include <cstdint>
#include <span>

namespace Zelto::Utilities {

/// Waits on events. Time-outs are milliseconds: 0 only looks, `Platform::kInfinite` waits without a limit.
///
/// The results are the system's: an index or 0, `Platform::kWaitTimeout` (0x102), or `Platform::kWaitFailed`
/// (0xFFFFFFFF) with the last system error set. Nothing is thrown.
class ZELTO_API WaitForObjects {
 public:
  WaitForObjects() = delete;

  /// Waits until any one of 1 to 64 events is signalled, or with `wait_all` until all are.
  ///
  /// @return for any one the lowest index that is signalled, for all 0
  static std::uint32_t WaitForMultipleObjects(std::span<const SharedHandle> events, bool wait_all,
                                              std::uint32_t timeout_ms) noexcept {
    return Platform::WaitForEvents(events, wait_all, timeout_ms);
  }

  /// Waits until one event is signalled. @return 0 when it is
  static std::uint32_t WaitForSingleObject(const SharedHandle& event, std::uint32_t timeout_ms) noexcept {
    return Platform::WaitForEvent(event, timeout_ms);
  }
};

}  // namespace Zelto::Utilities
