/// @file
/// Events that threads signal to each other.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/shared_handle.h>

namespace Zelto::Utilities {

/// Makes, signals and resets manual-reset events. Any thread may use an event; the last owner closes it.
class ZELTO_API EventAccessControl {
 public:
  EventAccessControl() = delete;

  /// Makes an unnamed manual-reset event, not signalled. Windows: `CreateEventW`. Linux: an eventfd.
  ///
  /// @throws Win32Exception  "Failed to create event", with the system's error
  static SharedHandle CreateLocalEvent();

  /// Signals an event: every wait on it ends until it is reset.
  ///
  /// @throws Win32Exception  "Failed to set event", with the system's error (6 for an empty handle)
  static void SetEvent(const SharedHandle& event);

  /// Takes an event's signal back.
  ///
  /// @throws Win32Exception  "Failed to reset event", with the system's error (6 for an empty handle)
  static void ResetEvent(const SharedHandle& event);
};

}  // namespace Zelto::Utilities
