#include "zelto/pipes/client_pipe_instance.h"

#include "zelto/pipes/async_named_pipe_client.h"
#include "zelto/pipes/message_transfer.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <mutex>
#include <stdexcept>
#include <utility>

namespace Zelto::Utilities {

namespace {

[[noreturn]] void ThrowWriteTimeout(std::uint32_t timeout_ms) {
  throw std::runtime_error("Timeout " + std::to_string(timeout_ms) + " expired while writing to named pipe");
}

[[noreturn]] void ThrowWriteRefused(Platform::ErrorCode error) {
  const bool disconnected = error == Platform::kPipeNotConnected;
  throw Win32Exception(disconnected ? "Disconnected" : "Error writing to named pipe", error);
}

}  // namespace

OutgoingMessage::OutgoingMessage(NamedPipeMessageEncoding encoding, const std::wstring& message) noexcept {
  try {
    buffer_.emplace(encoding, message);
  } catch (...) {
    failure_ = std::current_exception();
  }
}

AsyncIOBuffer& OutgoingMessage::Buffer() {
  if (failure_) {
    std::rethrow_exception(failure_);
  }
  return *buffer_;
}

ClientPipeInstance::ClientPipeInstance(std::wstring full_name)
    : name(std::move(full_name)),
      tasks(SerialTaskQueue::Create()),
      detached_writer_(std::make_shared<DetachedWriter>()) {}

ClientPipeInstance::~ClientPipeInstance() {
  detached_writer_->Abandon();
}

void ClientPipeInstance::RequireOpen() const {
  if (!pipe) {
    throw std::runtime_error("Pipe already closed");
  }
}

std::wstring ClientPipeInstance::Read(NamedPipeMessageEncoding encoding, std::uint32_t timeout_ms) {
  const std::lock_guard guard(lock);
  RequireOpen();
  if (closing_ > 0) {
    throw std::runtime_error("Pipe already closed");
  }
  event.Reset();
  if (!read_buffer_ || read_buffer_->Encoding() != encoding) {
    read_buffer_.emplace(encoding, std::size_t{AsyncNamedPipeClient::MAX_MESSAGE_SIZE});
  }
  std::wstring text;
  const TransferResult result =
      ReadWholeMessage({pipe, event, overlapped}, *read_buffer_, {.timeout_ms = timeout_ms}, text);
  switch (result.status) {
    case TransferStatus::Done:
      return text;
    case TransferStatus::TimedOut:
      throw std::runtime_error("Timeout expired while reading from named pipe");
    default:
      throw Win32Exception("Error reading from named pipe", result.error);
  }
}

void ClientPipeInstance::Write(OutgoingMessage& message, bool wait_for_completion, std::uint32_t timeout_ms) {
  const std::lock_guard guard(lock);
  RequireOpen();
  event.Reset();
  AsyncIOBuffer& buffer = message.Buffer();
  if (!wait_for_completion) {
    const Platform::ErrorCode error = detached_writer_->Write(pipe, std::move(buffer), timeout_ms);
    if (error == Platform::kTimeout) {
      ThrowWriteTimeout(timeout_ms);
    }
    if (error != Platform::kSuccess) {
      ThrowWriteRefused(error);
    }
    return;
  }
  const TransferResult result = WriteWholeMessage({pipe, event, overlapped}, buffer, {.timeout_ms = timeout_ms});
  switch (result.status) {
    case TransferStatus::Done:
      return;
    case TransferStatus::Refused:
      ThrowWriteRefused(result.error);
    case TransferStatus::TimedOut:
      ThrowWriteTimeout(timeout_ms);
    default:
      // Callers know a write that began and failed by this code, whatever ended it.
      throw Win32Exception("Error writing to named pipe", Platform::kIoPending);
  }
}

void ClientPipeInstance::Close(std::uint32_t timeout_ms) {
  ++closing_;
  try {
    tasks->Run([this, timeout_ms] { CloseNow(timeout_ms); }).get();
  } catch (...) {  // no memory for the task, or the pool cannot start: the lock alone orders this then
    CloseNow(timeout_ms);
  }
  --closing_;
}

void ClientPipeInstance::CloseNow(std::uint32_t timeout_ms) noexcept {
  const std::lock_guard guard(lock);
  if (pipe) {
    detached_writer_->Drain(timeout_ms);
    pipe.Reset();
    event.Reset();
  }
}

}  // namespace Zelto::Utilities
