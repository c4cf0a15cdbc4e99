#include "zelto/platform/message_pipe.h"
#include "zelto/platform/posix/deadline.h"
#include "zelto/platform/posix/descriptor.h"
#include "zelto/platform/posix/pipe_end.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace Zelto::Platform {

using Utilities::SharedHandle;

namespace {

// A pending write is tried again after this time even if the system does not say that there is room: it says so only
// when most of the queue is free, and says nothing to a write that waits for another one to go first.
constexpr std::uint32_t kWriteRetryMs = 5;

}  // namespace

// What the operation does on its end. The result of an attempt is `kIoPending` as long as it must go on.
struct PipeOperation::Access {
  static PipeEnd* End(const PipeOperation& operation) noexcept {
    return operation.pipe_ ? operation.pipe_.State()->Pipe() : nullptr;
  }

  static ErrorCode Begin(PipeOperation& operation, Kind kind, const void* buffer, std::uint32_t size) noexcept {
    operation.kind_ = kind;
    operation.buffer_ = const_cast<void*>(buffer);
    operation.size_ = size;
    operation.transferred_ = 0;
    operation.pending_ = false;
    PipeEnd* end = End(operation);
    ErrorCode result = kInvalidHandle;
    if (end != nullptr && kind == Kind::Connect) {
      result = end->Accept();
    } else if (end != nullptr && kind == Kind::Read) {
      result = end->ReadAtHand(operation.buffer_, size, operation.transferred_);
    } else if (end != nullptr) {
      result = end->BeginWrite(&operation, buffer, size);
    }
    return Settle(operation, result);
  }

  // Tries to bring a pending operation to its end.
  static ErrorCode Attempt(PipeOperation& operation) noexcept {
    PipeEnd& end = *End(operation);
    switch (operation.kind_) {
      case Kind::Connect:
        return Settle(operation, end.Accept());
      case Kind::Read:
        return Settle(operation, end.Read(operation.buffer_, operation.size_, operation.transferred_));
      default:
        return Settle(operation, end.ContinueWrite(&operation, operation.buffer_, operation.size_));
    }
  }

  static ErrorCode Settle(PipeOperation& operation, ErrorCode result) noexcept {
    operation.pending_ = result == kIoPending;
    operation.result_ = result;
    if (operation.kind_ == Kind::Write && result == kSuccess) {
      operation.transferred_ = operation.size_;
    }
    return result;
  }

  // What to wait for, on behalf of a pending operation.
  static pollfd Poll(const PipeOperation& operation, bool writes_rest) noexcept {
    PipeEnd& end = *End(operation);
    if (operation.kind_ != Kind::Write) {
      return pollfd{end.Descriptor(), POLLIN, 0};
    }
    return pollfd{!writes_rest && end.IsNextWrite(&operation) ? end.Descriptor() : -1, POLLOUT, 0};
  }

  // Whether waiting for the operation alone may happen inside its own system call, which spares the poll.
  static bool CanWaitItself(const PipeOperation& operation) noexcept {
    return operation.pending_ && operation.kind_ == Kind::Read;
  }

  static ErrorCode AttemptFor(PipeOperation& operation, std::uint32_t wait_ms) noexcept {
    return Settle(operation, End(operation)->Read(operation.buffer_, operation.size_, operation.transferred_, wait_ms));
  }

  static bool IsWrite(const PipeOperation& operation) noexcept { return operation.kind_ == Kind::Write; }
};

PipeOperation::PipeOperation(SharedHandle pipe, SharedHandle& event, OverlappedRecord& record) noexcept
    : pipe_(std::move(pipe)), event_(event), record_(record) {}

PipeOperation::~PipeOperation() {
  Cancel();
}

ErrorCode PipeOperation::BeginConnect() noexcept {
  return Access::Begin(*this, Kind::Connect, nullptr, 0);
}

ErrorCode PipeOperation::BeginRead(void* buffer, std::uint32_t size) noexcept {
  return Access::Begin(*this, Kind::Read, buffer, size);
}

ErrorCode PipeOperation::BeginWrite(const void* data, std::uint32_t size) noexcept {
  return Access::Begin(*this, Kind::Write, data, size);
}

ErrorCode PipeOperation::Finish(std::uint32_t& transferred) noexcept {
  if (pending_ && Access::Attempt(*this) == kIoPending) {
    return kIoIncomplete;
  }
  transferred = transferred_;
  return result_ == kPipeConnected ? kSuccess : result_;
}

ErrorCode PipeOperation::Cancel() noexcept {
  if (!pending_) {
    return kNotFound;
  }
  if (kind_ == Kind::Write) {
    Access::End(*this)->CancelWrite(this);
  }
  Access::Settle(*this, kOperationAborted);
  return kSuccess;
}

namespace {

using Access = PipeOperation::Access;

// What a thing that is waited for has come to.
enum class Outcome : std::uint8_t {
  kPending,
  kPendingInSpiteOfRoom,  // a write for which the system says that there is room, and which it does not take
  kDone,
  kInvalid
};

// Says what the system is to look at for each thing, and for how long at most: not at all when an operation has ended,
// and not for ever when a write must be tried again.
//
// @return false for an empty event
bool PreparePolls(std::span<const Waitable> things, bool writes_rest, std::span<pollfd> polls,
                  std::uint32_t& longest_ms) noexcept {
  longest_ms = kInfinite;
  for (std::size_t i = 0; i < things.size(); ++i) {
    const PipeOperation* operation = things[i].Operation();
    if (operation == nullptr) {
      if (!*things[i].Event()) {
        return false;
      }
      polls[i] = pollfd{DescriptorFromHandle(things[i].Event()->Get()), POLLIN, 0};
    } else if (operation->IsPending()) {
      polls[i] = Access::Poll(*operation, writes_rest);
      longest_ms = std::min(longest_ms, Access::IsWrite(*operation) ? kWriteRetryMs : kInfinite);
    } else {
      polls[i] = pollfd{-1, 0, 0};
      longest_ms = 0;
    }
  }
  return true;
}

Outcome LookAt(const SharedHandle& event, short signals) noexcept {
  if ((signals & POLLNVAL) != 0) {
    return Outcome::kInvalid;
  }
  if (signals == 0) {
    return Outcome::kPending;
  }
  event.State()->Observe();
  return Outcome::kDone;
}

Outcome LookAt(PipeOperation& operation, short signals) noexcept {
  if (!operation.IsPending()) {
    return Outcome::kDone;
  }
  const bool is_write = Access::IsWrite(operation);
  if ((signals != 0 || is_write) && Access::Attempt(operation) != kIoPending) {
    return Outcome::kDone;
  }
  return is_write && signals != 0 ? Outcome::kPendingInSpiteOfRoom : Outcome::kPending;
}

std::uint32_t FailWait(ErrorCode error) noexcept {
  SetLastErrorCode(error);
  return kWaitFailed;
}

}  // namespace

std::uint32_t WaitForAny(std::span<const Waitable> things, std::uint32_t timeout_ms) noexcept {
  std::array<pollfd, kMaximumWaitObjects> polls;
  if (things.empty() || things.size() > polls.size()) {
    return FailWait(kInvalidParameter);
  }
  const Deadline deadline(timeout_ms);
  if (things.size() == 1 && things[0].Operation() != nullptr && Access::CanWaitItself(*things[0].Operation()) &&
      Access::AttemptFor(*things[0].Operation(), timeout_ms) != kIoPending) {
    return 0;
  }
  bool writes_rest = false;
  while (true) {
    std::uint32_t longest_ms = kInfinite;
    if (!PreparePolls(things, writes_rest, polls, longest_ms)) {
      return FailWait(kInvalidHandle);
    }
    timespec left{};
    const int ready = ::ppoll(polls.data(), things.size(), deadline.Remaining(left, longest_ms), nullptr);
    if (ready < 0 && errno != EINTR) {
      return kWaitFailed;
    }
    writes_rest = false;
    for (std::size_t i = 0; i < things.size(); ++i) {
      const short signals = ready > 0 ? polls[i].revents : short{0};
      PipeOperation* operation = things[i].Operation();
      const Outcome outcome = operation == nullptr ? LookAt(*things[i].Event(), signals) : LookAt(*operation, signals);
      if (outcome == Outcome::kInvalid) {
        return FailWait(kInvalidHandle);
      }
      if (outcome == Outcome::kDone) {
        return static_cast<std::uint32_t>(i);
      }
      // Room that does not help (too many descriptors on their way) must not make this loop spin.
      writes_rest = writes_rest || outcome == Outcome::kPendingInSpiteOfRoom;
    }
    if (deadline.Passed()) {
      return kWaitTimeout;
    }
  }
}

}  // namespace Zelto::Platform
