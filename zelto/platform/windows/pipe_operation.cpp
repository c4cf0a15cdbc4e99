#include "zelto/platform/message_pipe.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <utility>

namespace Zelto::Platform {

using Utilities::SharedHandle;

static_assert(sizeof(OverlappedRecord) == sizeof(OVERLAPPED) && alignof(OverlappedRecord) == alignof(OVERLAPPED));
static_assert(offsetof(OverlappedRecord, internal) == offsetof(OVERLAPPED, Internal));
static_assert(offsetof(OverlappedRecord, internal_high) == offsetof(OVERLAPPED, InternalHigh));
static_assert(offsetof(OverlappedRecord, offset) == offsetof(OVERLAPPED, Offset));
static_assert(offsetof(OverlappedRecord, offset_high) == offsetof(OVERLAPPED, OffsetHigh));
static_assert(offsetof(OverlappedRecord, event) == offsetof(OVERLAPPED, hEvent));

struct PipeOperation::Access {
  static OVERLAPPED* Record(PipeOperation& operation) noexcept {
    return reinterpret_cast<OVERLAPPED*>(&operation.record_);
  }

  static HANDLE Event(const PipeOperation& operation) noexcept { return operation.event_.Get(); }

  // Readies the event and the record. @return 0 or the error of making the event
  static ErrorCode Prepare(PipeOperation& operation, Kind kind) noexcept {
    operation.kind_ = kind;
    operation.transferred_ = 0;
    operation.pending_ = false;
    operation.result_ = kSuccess;
    if (!operation.event_) {
      operation.event_ = CreateManualEvent();
      if (!operation.event_) {
        operation.result_ = GetLastErrorCode();
        return operation.result_;
      }
    }
    operation.record_.internal = 0;
    operation.record_.internal_high = 0;
    operation.record_.event = operation.event_.Get();
    return kSuccess;
  }

  // Judges a begun operation by what the call that began it returned. Only what the system accepted has a record that
  // tells an outcome: success, more data, and pending.
  static ErrorCode Judge(PipeOperation& operation, bool succeeded) noexcept {
    operation.result_ = succeeded ? kSuccess : ::GetLastError();
    if (operation.result_ == kIoPending) {
      operation.pending_ = true;
    } else if (operation.result_ == kSuccess || operation.result_ == kMoreData) {
      operation.transferred_ = static_cast<std::uint32_t>(operation.record_.internal_high);
    }
    return operation.result_;
  }

  // Takes over the outcome of a pending operation. @return `kIoIncomplete` while it goes on
  static ErrorCode Settle(PipeOperation& operation, bool wait) noexcept {
    DWORD transferred = 0;
    const BOOL succeeded =
        ::GetOverlappedResult(operation.pipe_.Get(), Record(operation), &transferred, wait ? TRUE : FALSE);
    const ErrorCode result = succeeded ? kSuccess : ::GetLastError();
    if (result == kIoIncomplete) {
      return result;
    }
    operation.pending_ = false;
    operation.transferred_ = transferred;
    operation.result_ = result;
    return result;
  }
};

PipeOperation::PipeOperation(SharedHandle pipe, SharedHandle& event, OverlappedRecord& record) noexcept
    : pipe_(std::move(pipe)), event_(event), record_(record) {}

PipeOperation::~PipeOperation() {
  Cancel();
}

ErrorCode PipeOperation::BeginConnect() noexcept {
  if (const ErrorCode error = Access::Prepare(*this, Kind::Connect); error != kSuccess) {
    return error;
  }
  const BOOL connected = ::ConnectNamedPipe(pipe_.Get(), Access::Record(*this));
  // A client that came and went counts as connected: what it wrote can be read.
  const ErrorCode result = Access::Judge(*this, connected);
  return result == kSuccess || result == kNoData ? (result_ = kPipeConnected) : result;
}

ErrorCode PipeOperation::BeginRead(void* buffer, std::uint32_t size) noexcept {
  if (const ErrorCode error = Access::Prepare(*this, Kind::Read); error != kSuccess) {
    return error;
  }
  return Access::Judge(*this, ::ReadFile(pipe_.Get(), buffer, size, nullptr, Access::Record(*this)));
}

ErrorCode PipeOperation::BeginWrite(const void* data, std::uint32_t size) noexcept {
  if (const ErrorCode error = Access::Prepare(*this, Kind::Write); error != kSuccess) {
    return error;
  }
  return Access::Judge(*this, ::WriteFile(pipe_.Get(), data, size, nullptr, Access::Record(*this)));
}

ErrorCode PipeOperation::Finish(std::uint32_t& transferred) noexcept {
  if (pending_ && Access::Settle(*this, false) == kIoIncomplete) {
    return kIoIncomplete;
  }
  transferred = transferred_;
  const bool connected = kind_ == Kind::Connect && (result_ == kPipeConnected || result_ == kNoData);
  return connected ? kSuccess : result_;
}

// What the system accepted it settles, cancelled or not, so the wait ends even when there was nothing left to cancel.
ErrorCode PipeOperation::Cancel() noexcept {
  if (!pending_) {
    return kNotFound;
  }
  ::CancelIoEx(pipe_.Get(), Access::Record(*this));
  Access::Settle(*this, true);
  pending_ = false;
  return kSuccess;
}

std::uint32_t WaitForAny(std::span<const Waitable> things, std::uint32_t timeout_ms) noexcept {
  std::array<HANDLE, kMaximumWaitObjects> handles{};
  if (things.empty() || things.size() > handles.size()) {
    SetLastErrorCode(kInvalidParameter);
    return kWaitFailed;
  }
  DWORD count = 0;
  for (const Waitable& thing : things) {
    const PipeOperation* operation = thing.Operation();
    if (operation != nullptr && !operation->IsPending()) {
      // This one is ready; only what stands before it can be chosen instead.
      const DWORD before = count == 0 ? WAIT_TIMEOUT : ::WaitForMultipleObjects(count, handles.data(), FALSE, 0);
      return before == WAIT_TIMEOUT ? count : before;
    }
    handles[count++] = operation != nullptr ? PipeOperation::Access::Event(*operation) : thing.Event()->Get();
  }
  return ::WaitForMultipleObjects(count, handles.data(), FALSE, timeout_ms);
}

}  // namespace Zelto::Platform
