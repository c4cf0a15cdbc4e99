#include "zelto/platform/events.h"

#include "zelto/platform/handle_state.h"
#include "zelto/platform/posix/deadline.h"
#include "zelto/platform/posix/descriptor.h"
#include "zelto/platform/posix/errno_codes.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>

namespace Zelto::Platform {

using Utilities::SharedHandle;

namespace {

bool IsSignalled(const pollfd& poll) noexcept {
  return poll.revents != 0;
}

// Fills in what is signalled. @return the lowest index, `kWaitTimeout` or `kWaitFailed`
std::uint32_t PollForOne(std::span<pollfd> polls, const Deadline& deadline) noexcept {
  while (true) {
    timespec left{};
    const int ready = ::ppoll(polls.data(), polls.size(), deadline.Remaining(left), nullptr);
    if (ready > 0) {
      const auto first = std::find_if(polls.begin(), polls.end(), IsSignalled);
      if ((first->revents & POLLNVAL) == 0) {
        return static_cast<std::uint32_t>(first - polls.begin());
      }
      SetLastErrorCode(kInvalidHandle);
      return kWaitFailed;
    }
    if (ready < 0 && errno != EINTR) {
      return kWaitFailed;
    }
    if (ready == 0 && deadline.Passed()) {
      return kWaitTimeout;
    }
  }
}

// Looks at all together; while one is out, sleeps on that one alone and looks again.
std::uint32_t PollForAll(std::span<pollfd> polls, const Deadline& deadline) noexcept {
  while (true) {
    const std::uint32_t any = PollForOne(polls, Deadline(0));
    if (any == kWaitFailed) {
      return any;
    }
    const auto out = std::find_if_not(polls.begin(), polls.end(), IsSignalled);
    if (out == polls.end()) {
      return 0;
    }
    if (const std::uint32_t came = PollForOne(std::span(&*out, 1), deadline); came != 0) {
      return came;
    }
  }
}

}  // namespace

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
  event.State()->Publish();
  const std::uint64_t one = 1;
  while (::write(DescriptorFromHandle(event.Get()), &one, sizeof one) < 0) {
    if (errno != EINTR) {
      return errno == EAGAIN ? kSuccess : CodeFromErrno(errno);
    }
  }
  return kSuccess;
}

ErrorCode ClearEvent(const SharedHandle& event) noexcept {
  if (!event) {
    return kInvalidHandle;
  }
  std::uint64_t count = 0;
  while (::read(DescriptorFromHandle(event.Get()), &count, sizeof count) < 0) {
    if (errno != EINTR) {
      return errno == EAGAIN ? kSuccess : CodeFromErrno(errno);
    }
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
  const std::span<pollfd> polled(polls.data(), events.size());
  const Deadline deadline(timeout_ms);
  const std::uint32_t result = all ? PollForAll(polled, deadline) : PollForOne(polled, deadline);
  for (std::size_t i = 0; i < events.size(); ++i) {
    if (polls[i].revents != 0) {
      events[i].State()->Observe();
    }
  }
  return result;
}

}  // namespace Zelto::Platform
