#include "zelto/pipes/async_named_pipe_client.h"

#include "zelto/pipes/accept_peer.h"
#include "zelto/pipes/client_pipe_instance.h"
#include "zelto/pipes/pipe_name.h"
#include "zelto/platform/message_pipe.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

namespace Zelto::Utilities {

namespace {

constexpr std::chrono::milliseconds kAttemptPause{200};

}  // namespace

const std::uint32_t IAsyncNamedPipeClient::DEFAULT_TIMEOUT;
const std::uint32_t AsyncNamedPipeClient::MAX_ATTEMPTS_COUNT;
const std::uint32_t AsyncNamedPipeClient::MAX_MESSAGE_SIZE;

AsyncNamedPipeClient::AsyncNamedPipeClient(const std::wstring& pipe_name, std::uint32_t timeout_ms)
    : instance_(std::make_shared<ClientPipeInstance>(FullPipeName(pipe_name))),
      timeout_ms_(timeout_ms == 0 ? DEFAULT_TIMEOUT : timeout_ms) {}

AsyncNamedPipeClient::~AsyncNamedPipeClient() = default;

Task<void> AsyncNamedPipeClient::WriteMessage(const std::wstring& message, bool wait_for_completion) {
  return instance_->tasks->Run(
      [instance = instance_, outgoing = OutgoingMessage(GetEncoding(), message), wait_for_completion,
       timeout_ms = GetTimeout()]() mutable { instance->Write(outgoing, wait_for_completion, timeout_ms); });
}

Task<std::wstring> AsyncNamedPipeClient::ReadMessage() {
  return instance_->tasks->Run([instance = instance_, encoding = GetEncoding(), timeout_ms = GetTimeout()] {
    return instance->Read(encoding, timeout_ms);
  });
}

void AsyncNamedPipeClient::Open(SharedHandle pipe) {
  const std::lock_guard guard(instance_->lock);
  if (!instance_->pipe) {
    Init(std::move(pipe));
  }
}

void AsyncNamedPipeClient::Init(SharedHandle pipe) {
  const std::lock_guard guard(instance_->lock);
  instance_->pipe = std::move(pipe);
  for (std::uint32_t attempts = 0; !instance_->pipe && attempts < MAX_ATTEMPTS_COUNT; ++attempts) {
    if (!OpenNamedPipe()) {
      std::this_thread::sleep_for(kAttemptPause);
    }
  }
  if (!instance_->pipe) {
    throw Win32Exception("Failed to connect to the pipe: " + NameInUtf8(), open_error_);
  }
  if (const Platform::ErrorCode error = Platform::SetMessageReadMode(instance_->pipe); error != Platform::kSuccess) {
    instance_->pipe.Reset();
    throw Win32Exception("Failed to change NamedPipe state", error);
  }
  initialized_ = true;
}

bool AsyncNamedPipeClient::OpenNamedPipe() {
  const std::lock_guard guard(instance_->lock);
  open_error_ = Platform::OpenPipe(instance_->name, instance_->pipe);
  switch (open_error_) {
    case Platform::kSuccess:
      if (!AuthenticateDestinationServer()) {
        instance_->pipe.Reset();
        throw Win32Exception("Error opening named pipe: " + NameInUtf8() + ". Signature is invalid",
                             Platform::kInvalidExeSignature);
      }
      return true;
    case Platform::kFileNotFound:
      return false;
    case Platform::kPipeBusy:
      Platform::WaitForFreePipe(instance_->name, GetTimeout());
      return false;
    default:
      throw Win32Exception("Error opening named pipe: " + NameInUtf8(), open_error_);
  }
}

bool AsyncNamedPipeClient::AuthenticateDestinationServer() {
  const std::lock_guard guard(instance_->lock);
  const PipeAuthenticationCallback callback = authenticate_;  // which the callback may replace
  return AcceptPeer(callback, instance_->pipe, false);
}

void AsyncNamedPipeClient::Close() {
  instance_->Close(GetTimeout());
}

void AsyncNamedPipeClient::SetAuthenticatePipe(PipeAuthenticationCallback callback) {
  const std::lock_guard guard(instance_->lock);
  authenticate_ = std::move(callback);
}

std::string AsyncNamedPipeClient::NameInUtf8() const {
  return StringUtilities::Utf16ToUtf8(instance_->name);
}

}  // namespace Zelto::Utilities
