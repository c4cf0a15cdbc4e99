#include "zelto/pipes/active_named_pipe_server_connection.h"

#include "zelto/pipes/message_transfer.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/threading/event_access_control.h"
#include "zelto/threading/failure_report.h"
#include "zelto/threading/thread_starter.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace Zelto::Utilities {

namespace {

constexpr std::uint32_t kDefaultBufferSize = 4096;
constexpr std::uint32_t kLargestBufferSize = 0x7FFFFFFF;  // in UTF-16 its bytes still have a count of 32 bits

SharedHandle MakeStopEvent() {
  SharedHandle event = Platform::CreateManualEvent();
  if (!event) {
    throw Win32Exception("ActiveNamedPipeServerConnection: Failed to create stop event.");
  }
  return event;
}

}  // namespace

const std::uint32_t ActiveNamedPipeServerConnection::RESPONSE_TIMEOUT;

std::shared_ptr<ActiveNamedPipeServerConnection> ActiveNamedPipeServerConnection::Create(
    unsigned int id, std::shared_ptr<NamedPipeInstance> instance, std::uint32_t /*timeout_ms*/,
    std::uint32_t buffer_size, NamedPipeMessageEncoding encoding, MessageReceivedCallback message_received,
    ClientDroppedCallback client_dropped) {
  std::shared_ptr<ActiveNamedPipeServerConnection> self(new ActiveNamedPipeServerConnection(
      id, std::move(instance), buffer_size, encoding, std::move(message_received), std::move(client_dropped)));
  self->self_ = self;
  // The thread shares `self`; what callers own stops the connection when the last of them goes.
  return {self.get(), [self](ActiveNamedPipeServerConnection*) mutable {
            self->Stop();
            self.reset();
          }};
}

ActiveNamedPipeServerConnection::ActiveNamedPipeServerConnection(
    unsigned int id, std::shared_ptr<NamedPipeInstance> instance, std::uint32_t buffer_size,
    NamedPipeMessageEncoding encoding, MessageReceivedCallback message_received, ClientDroppedCallback client_dropped)
    : id_(id),
      instance_(std::move(instance)),
      buffer_size_(buffer_size == 0 ? kDefaultBufferSize : std::min(buffer_size, kLargestBufferSize)),
      encoding_(encoding),
      message_received_(std::move(message_received)),
      client_dropped_(std::move(client_dropped)),
      stop_event_(MakeStopEvent()) {}

ActiveNamedPipeServerConnection::~ActiveNamedPipeServerConnection() = default;

void ActiveNamedPipeServerConnection::Start() {
  const std::lock_guard guard(state_lock_);
  if (IsRunning()) {
    return;
  }
  Release(std::move(thread_));
  EventAccessControl::ResetEvent(stop_event_);
  const std::uint64_t run = ++last_run_;
  current_run_ = run;
  ++threads_;
  try {
    thread_ = StartThread([self = self_.lock(), run] { self->Run(run); });
  } catch (...) {
    current_run_ = kNoRun;
    --threads_;
    throw;
  }
}

void ActiveNamedPipeServerConnection::Stop() {
  std::thread thread;
  {
    const std::lock_guard guard(state_lock_);
    RequestStop();
    thread = std::move(thread_);
  }
  Release(std::move(thread));
}

void ActiveNamedPipeServerConnection::RequestStop() noexcept {
  current_run_ = kNoRun;
  Disconnect();
  Platform::SignalEvent(stop_event_);
}

void ActiveNamedPipeServerConnection::Disconnect() noexcept {
  const std::lock_guard guard(pipe_lock_);
  Platform::DisconnectPipe(instance_->pipe);
}

void ActiveNamedPipeServerConnection::Release(std::thread thread) noexcept {
  try {
    if (thread.get_id() == std::this_thread::get_id()) {
      JoinLater(std::move(thread));
    } else if (thread.joinable()) {
      thread.join();
    }
  } catch (...) {
    ReportCurrentException(L"Exception while stopping connection thread");
  }
}

void ActiveNamedPipeServerConnection::Run(std::uint64_t run) noexcept {
  try {
    ReceiveData(run);
  } catch (...) {
    ReportCurrentException(L"Exception reading data from client");
  }
  Disconnect();
  if (current_run_ == run) {
    try {
      client_dropped_(id_);
    } catch (...) {
      ReportCurrentException(L"Exception in the client-dropped callback");
    }
  }
  {
    // Whoever still holds the connection must not keep the pipe's name in use.
    const std::scoped_lock guard(io_lock_, pipe_lock_);
    instance_->pipe.Reset();
  }
  current_run_.compare_exchange_strong(run, kNoRun);
  --threads_;
}

// A callback that stops the connection and starts it again leaves this run for good.
void ActiveNamedPipeServerConnection::ReceiveData(std::uint64_t run) {
  AsyncIOBuffer buffer(encoding_, static_cast<std::size_t>(buffer_size_));
  std::wstring message;
  while (current_run_ == run && ReadMessage(buffer, message)) {
    if (!message_received_ || message.empty()) {
      continue;
    }
    std::wstring answer;
    try {
      answer = message_received_(id_, std::move(message));
    } catch (...) {
      ReportCurrentException(L"Exception in the message-received callback");
      return;
    }
    try {
      if (!answer.empty() && !Respond(answer)) {
        return;
      }
    } catch (...) {
      ReportCurrentException(L"Exception writing data to the client ");
      return;
    }
  }
}

bool ActiveNamedPipeServerConnection::ReadMessage(AsyncIOBuffer& buffer, std::wstring& message) {
  message.clear();
  // `RequestStop` disconnects the pipe, too: where that ends a read, the wait is for the read alone.
  const TransferLimits limits{.stop = Platform::DisconnectEndsReads() ? nullptr : &stop_event_,
                              .maximum_bytes = maximum_message_size_};
  const std::lock_guard guard(io_lock_);
  const TransferResult result =
      ReadWholeMessage({instance_->pipe, instance_->event, instance_->overlapped}, buffer, limits, message);
  switch (result.status) {
    case TransferStatus::Done:
      return true;
    case TransferStatus::TooLong:
      throw std::runtime_error("Message exceeds the maximum size");
    case TransferStatus::Refused:
    case TransferStatus::Failed:
      if (!IsRunning() || IsPeerGone(result.error)) {
        return false;
      }
      throw Win32Exception("Error reading from named pipe", result.error);
    default:
      return false;
  }
}

bool ActiveNamedPipeServerConnection::Respond(const std::wstring& message) {
  const AsyncIOBuffer buffer(encoding_, message);
  const std::lock_guard guard(io_lock_);
  const TransferResult result = WriteWholeMessage({instance_->pipe, instance_->event, instance_->overlapped}, buffer,
                                                  {.timeout_ms = RESPONSE_TIMEOUT, .stop = &stop_event_});
  const bool failed = result.status == TransferStatus::Refused || result.status == TransferStatus::Failed;
  if (failed && IsRunning() && !IsPeerGone(result.error)) {
    throw Win32Exception("Error writing to named pipe", result.error);
  }
  return result.status == TransferStatus::Done;
}

}  // namespace Zelto::Utilities
