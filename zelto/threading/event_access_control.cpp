#include "zelto/threading/event_access_control.h"

#include "zelto/platform/events.h"
#include "zelto/text/exceptions/win32_exception.h"

namespace Zelto::Utilities {

namespace {

void ThrowUnless(Platform::ErrorCode code, const char* text) {
  if (code != Platform::kSuccess) {
    throw Win32Exception(text, code);
  }
}

}  // namespace

SharedHandle EventAccessControl::CreateLocalEvent() {
  SharedHandle event = Platform::CreateManualEvent();
  if (!event) {
    throw Win32Exception("Failed to create event");
  }
  return event;
}

void EventAccessControl::SetEvent(const SharedHandle& event) {
  ThrowUnless(Platform::SignalEvent(event), "Failed to set event");
}

void EventAccessControl::ResetEvent(const SharedHandle& event) {
  ThrowUnless(Platform::ClearEvent(event), "Failed to reset event");
}

}  // namespace Zelto::Utilities
