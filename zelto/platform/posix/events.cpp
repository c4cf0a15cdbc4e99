#include "zelto/platform/events.h"

#include "zelto/platform/posix/deadline.h"
#include "zelto/platform/posix/descriptor.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>

namespace Zelto::Platform {

using Utilities::SharedHandle;

SharedHandle CreateManualEvent() noexcept {
  const int descriptor = AvoidStandardStreams(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (descriptor < 0) {
    return SharedHandle();
  }
  try {
    return SharedHandle(HandleFromDescriptor(descriptor));
  } catch (const std::bad_alloc&) {
    SetLastErrorCode(kNotEnoughMemory);
    return SharedHandle();
  }
}

// The event is signalled while the counter is not zero. A full counter (EAGAIN) is signalled as well.
ErrorCode SignalEvent(const SharedHandle& event) noexcept {
  if (!event) {
    return kInvalidHandle;
  }
  const std::uint64_t one = 1;
  while (::write(DescriptorFromHandle(event.Get()), &one, sizeof one) < 0 && errno == EINTR) {
  }
  return kSuccess;
}

ErrorCode ClearEvent(const SharedHandle& event) noexcept {
  if (!event) {
    return kInvalidHandle;
  }
  std::uint64_t count = 0;
  while (::read(DescriptorFromHandle(event.Get()), &count, sizeof count) < 0 && errno == EINTR) {
  }
  return kSuccess;
}

std::uint32_t WaitForEvent(const SharedHandle& event, std::uint32_t timeout_ms) noexcept {
  return WaitForEvents(std::span(&event, 1), false, timeout_ms);
}

std::uint32_t WaitForEvents(std::span<const SharedHandle> events, bool all, std::uint32_t timeout_ms) noexcept {
  std::array<pollfd, kMaximumWaitObjects> polls;
  if (events.empty() || events.size() > polls.size()) {
    SetLastErrorCode(kInvalidParameter);
    return kWaitFailed;
  }
  for (std::size_t i = 0; i < events.size(); ++i) {
    if (!events[i]) {
      SetLastErrorCode(kInvalidHandle);
      return kWaitFailed;
    }
    polls[i] = pollfd{DescriptorFromHandle(events[i].Get()), POLLIN, 0};
  }
  const auto first = polls.begin();
  const auto last = first + static_cast<std::ptrdiff_t>(events.size());
  const auto signalled = [](const pollfd& poll) { return poll.revents != 0; };
  const Deadline deadline(timeout_ms);
  constexpr timespec kOnlyLook{};
  while (true) {
    timespec left{};
    // For all: look at all together; while one is out, sleep on that one alone and look again.
    int ready = ::ppoll(polls.data(), events.size(), all ? &kOnlyLook : deadline.Remaining(left), nullptr);
    if (all && ready >= 0 && static_cast<std::size_t>(ready) < events.size()) {
      ready = ::ppoll(&*std::find_if_not(first, last, signalled), 1, deadline.Remaining(left), nullptr);
      if (ready > 0) {
        continue;
      }
    }
    if (ready > 0) {
      return all ? 0 : static_cast<std::uint32_t>(std::find_if(first, last, signalled) - first);
    }
    if (ready < 0 && errno != EINTR) {
      return kWaitFailed;
    }
    if (deadline.Passed()) {
      return kWaitTimeout;
    }
  }
}

}  // namespace Zelto::Platform
