/// @file
/// How one message is read or written: the loops that client and server share. Not installed.
#pragma once

#include <zelto/pipes/async_io_buffer.h>
#include <zelto/platform/message_pipe.h>
#include <zelto/platform/shared_handle.h>

#include <cstdint>
#include <string>

namespace Zelto::Utilities {

/// How a transfer ended.
enum class TransferStatus : std::uint8_t {
  Done,
  Refused,   ///< the system refused the operation at once; `error` tells why
  Failed,    ///< the operation began and failed; `error` tells why
  TimedOut,  ///< and was cancelled
  Stopped,   ///< the stop event came first; the operation was cancelled
  TooLong    ///< the message exceeds the limit; it was not gathered
};

struct TransferResult {
  TransferStatus status = TransferStatus::Done;
  Platform::ErrorCode error = Platform::kSuccess;
};

/// What bounds a transfer.
struct TransferLimits {
  std::uint32_t timeout_ms = Platform::kInfinite;  ///< of each wait
  const SharedHandle* stop = nullptr;              ///< an event that ends it early; may be null
  std::uint64_t maximum_bytes = 0;                 ///< of a message that is read; 0 means no limit
};

/// One end of a pipe with what an operation on it needs. The caller makes sure that one operation at a time uses it.
struct TransferEnd {
  const SharedHandle& pipe;
  SharedHandle& event;
  Platform::OverlappedRecord& record;
};

/// Reads one message, chunk by chunk into `buffer`, whatever that held, and appends its text to `text`. Each chunk is
/// decoded on its own.
///
/// Nothing is pending when it returns or throws. Text gathered before a failure is of no use.
/// @throws std::range_error  "bad conversion"; the rest of the message has been consumed then
TransferResult ReadWholeMessage(const TransferEnd& end, AsyncIOBuffer& buffer, const TransferLimits& limits,
                                std::wstring& text);

/// Writes one message. Nothing is pending when it returns.
TransferResult WriteWholeMessage(const TransferEnd& end, const AsyncIOBuffer& buffer,
                                 const TransferLimits& limits) noexcept;

/// True for the errors by which a server's end learns that its client is gone: 109, 232, 233 and 6.
bool IsPeerGone(Platform::ErrorCode error) noexcept;

}  // namespace Zelto::Utilities
