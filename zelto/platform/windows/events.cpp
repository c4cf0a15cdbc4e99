#include "zelto/platform/events.h"

#include <windows.h>

#include <array>
#include <new>

namespace Zelto::Platform {

using Utilities::SharedHandle;

static_assert(kInfinite == INFINITE && kWaitTimeout == WAIT_TIMEOUT && kWaitFailed == WAIT_FAILED);
static_assert(kMaximumWaitObjects == MAXIMUM_WAIT_OBJECTS && WAIT_OBJECT_0 == 0);

SharedHandle CreateManualEvent() noexcept {
  try {
    return SharedHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  } catch (const std::bad_alloc&) {
    SetLastErrorCode(kNotEnoughMemory);
    return SharedHandle();
  }
}

ErrorCode SignalEvent(const SharedHandle& event) noexcept {
  return ::SetEvent(event.Get()) ? kSuccess : ::GetLastError();
}

ErrorCode ClearEvent(const SharedHandle& event) noexcept {
  return ::ResetEvent(event.Get()) ? kSuccess : ::GetLastError();
}

std::uint32_t WaitForEvent(const SharedHandle& event, std::uint32_t timeout_ms) noexcept {
  return ::WaitForSingleObject(event.Get(), timeout_ms);
}

std::uint32_t WaitForEvents(std::span<const SharedHandle> events, bool all, std::uint32_t timeout_ms) noexcept {
  std::array<HANDLE, kMaximumWaitObjects> handles{};
  if (events.empty() || events.size() > handles.size()) {
    SetLastErrorCode(kInvalidParameter);
    return kWaitFailed;
  }
  for (std::size_t i = 0; i < events.size(); ++i) {
    handles[i] = events[i].Get();
  }
  const DWORD result = ::WaitForMultipleObjects(static_cast<DWORD>(events.size()), handles.data(), all, timeout_ms);
  return all && result < kMaximumWaitObjects ? 0 : result;
}

}  // namespace Zelto::Platform
