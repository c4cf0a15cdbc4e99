/// @file
/// Manual-reset events, and waits on one or several of them.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/errors.h>
#include <zelto/platform/shared_handle.h>

#include <cstdint>
#include <span>

namespace Zelto::Platform {

inline constexpr std::uint32_t kInfinite = 0xFFFFFFFF;    // INFINITE, as a time-out in milliseconds
inline constexpr std::uint32_t kWaitTimeout = 0x102;      // WAIT_TIMEOUT
inline constexpr std::uint32_t kWaitFailed = 0xFFFFFFFF;  // WAIT_FAILED

/// The most handles one wait takes (MAXIMUM_WAIT_OBJECTS).
inline constexpr std::uint32_t kMaximumWaitObjects = 64;

/// Makes an unnamed manual-reset event, not signalled and not inheritable. Any thread may set, reset and wait.
///
/// Windows: `CreateEventW`. Linux: an eventfd.
/// @return the event; empty on failure, and `GetLastErrorCode` tells why
ZELTO_API Utilities::SharedHandle CreateManualEvent() noexcept;

/// Signals an event until it is reset. 0, or `kInvalidHandle` for an empty handle.
ZELTO_API ErrorCode SignalEvent(const Utilities::SharedHandle& event) noexcept;

/// Takes an event's signal back. 0, or `kInvalidHandle` for an empty handle.
ZELTO_API ErrorCode ClearEvent(const Utilities::SharedHandle& event) noexcept;

/// Waits until one event is signalled, for at most `timeout_ms` milliseconds (`kInfinite`: no limit; 0: only looks).
///
/// @return 0 when signalled, `kWaitTimeout`, or `kWaitFailed` (an empty handle), with `GetLastErrorCode` set
ZELTO_API std::uint32_t WaitForEvent(const Utilities::SharedHandle& event, std::uint32_t timeout_ms) noexcept;

/// Waits until any one, or all, of several events are signalled.
///
/// @param events  1 to `kMaximumWaitObjects` events
/// @return for any one the lowest index of a signalled event; for all 0; `kWaitTimeout`; or `kWaitFailed` (an empty
///         handle, no event or too many), with `GetLastErrorCode` set
///
/// Windows: `WaitForMultipleObjects`. Linux: `poll`; a wait for all looks at them together, and events that go out
/// again before the others come count as not signalled.
ZELTO_API std::uint32_t WaitForEvents(std::span<const Utilities::SharedHandle> events, bool all,
                                      std::uint32_t timeout_ms) noexcept;

}  // namespace Zelto::Platform
