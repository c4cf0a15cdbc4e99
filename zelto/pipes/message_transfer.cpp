#include "zelto/pipes/message_transfer.h"

#include <array>
#include <exception>
#include <limits>
#include <span>

namespace Zelto::Utilities {

namespace {

using Platform::ErrorCode;
using Platform::PipeOperation;

bool Succeeded(ErrorCode code) noexcept {
  return code == Platform::kSuccess || code == Platform::kMoreData;
}

/// Waits for an operation that may be pending and finishes it, or cancels it.
TransferResult Complete(PipeOperation& operation, const TransferLimits& limits, std::uint32_t& transferred) noexcept {
  if (operation.IsPending()) {
    // The operation stands first: what is there already is taken even when the stop event is signalled too.
    const std::uint32_t ready =
        limits.stop == nullptr
            ? Platform::WaitForAny(std::array<Platform::Waitable, 1>{operation}, limits.timeout_ms)
            : Platform::WaitForAny(std::array<Platform::Waitable, 2>{operation, *limits.stop}, limits.timeout_ms);
    if (ready != 0) {
      const ErrorCode error = Platform::GetLastErrorCode();
      operation.Cancel();
      switch (ready) {
        case Platform::kWaitTimeout:
          // What ended before it could be cancelled has taken its message from the pipe, or put it there.
          if (const ErrorCode code = operation.Finish(transferred); Succeeded(code)) {
            return {TransferStatus::Done, code};
          }
          return {TransferStatus::TimedOut, Platform::kTimeout};
        case 1:
          return {TransferStatus::Stopped, Platform::kOperationAborted};
        default:
          return {TransferStatus::Failed, error};
      }
    }
  }
  const ErrorCode code = operation.Finish(transferred);
  if (!Succeeded(code)) {
    operation.Cancel();
  }
  return {Succeeded(code) ? TransferStatus::Done : TransferStatus::Failed, code};
}

}  // namespace

TransferResult ReadWholeMessage(const TransferEnd& end, AsyncIOBuffer& buffer, const TransferLimits& limits,
                                std::wstring& text) {
  end.record = {};
  PipeOperation operation(end.pipe, end.event, end.record);
  std::uint64_t gathered = 0;
  std::exception_ptr failure;
  while (true) {
    const ErrorCode begun =
        operation.BeginRead(buffer.TransferData(), static_cast<std::uint32_t>(buffer.TransferSize()));
    if (begun != Platform::kSuccess && begun != Platform::kIoPending && begun != Platform::kMoreData) {
      operation.Cancel();
      return {TransferStatus::Refused, begun};
    }
    std::uint32_t count = 0;
    const TransferResult result = Complete(operation, limits, count);
    if (result.status != TransferStatus::Done) {
      return result;
    }
    gathered += count;
    if (limits.maximum_bytes != 0 && gathered > limits.maximum_bytes) {
      return {TransferStatus::TooLong, Platform::kMoreData};
    }
    if (count != 0 && !failure) {
      try {
        if (text.empty()) {
          text = buffer.Text(count);
        } else {
          text += buffer.Text(count);
        }
      } catch (...) {
        failure = std::current_exception();
      }
    }
    if (result.error == Platform::kSuccess) {
      break;
    }
    end.record.offset += count;
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
  return {};
}

TransferResult WriteWholeMessage(const TransferEnd& end, const AsyncIOBuffer& buffer,
                                 const TransferLimits& limits) noexcept {
  if (buffer.TransferSize() > std::numeric_limits<std::uint32_t>::max()) {
    return {TransferStatus::Refused, Platform::kInvalidParameter};
  }
  end.record = {};
  PipeOperation operation(end.pipe, end.event, end.record);
  const ErrorCode begun =
      operation.BeginWrite(buffer.TransferData(), static_cast<std::uint32_t>(buffer.TransferSize()));
  if (begun == Platform::kSuccess) {
    return {};
  }
  if (begun != Platform::kIoPending) {
    operation.Cancel();
    return {TransferStatus::Refused, begun};
  }
  std::uint32_t count = 0;
  return Complete(operation, limits, count);
}

bool IsPeerGone(ErrorCode error) noexcept {
  return error == Platform::kBrokenPipe || error == Platform::kNoData || error == Platform::kPipeNotConnected ||
         error == Platform::kInvalidHandle;
}

}  // namespace Zelto::Utilities
