#include "zelto/pipes/pipe_observer.h"

#include "zelto/pipes/multi_client_named_pipe_server.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/threading/failure_report.h"

#include <algorithm>
#include <utility>

namespace Zelto::Utilities {

namespace {

constexpr std::uint32_t kFirstRetryMs = 50;
constexpr std::uint32_t kLastRetryMs = 2000;

std::size_t InstancesToListenWith() noexcept {
  return std::min(MultiClientNamedPipeServer::LISTENING_INSTANCES, Platform::ListeningInstances());
}

}  // namespace

PipeObserver::PipeObserver(Platform::PipeSettings settings, SharedHandle stop, SharedHandle wake)
    : settings_(std::move(settings)), stop_(std::move(stop)), wake_(std::move(wake)) {}

PipeObserver::~PipeObserver() {
  for (const Listening& instance : listening_) {
    Platform::DisconnectPipe(instance.instance->pipe);
  }
  for (const Listening& client : connected_) {
    Platform::DisconnectPipe(client.instance->pipe);
  }
}

std::shared_ptr<NamedPipeInstance> PipeObserver::WaitForNewClient(std::uint32_t timeout_ms) {
  ListenAgain();
  if (connected_.empty()) {
    Wait(timeout_ms);
  }
  TakeConnected();
  if (connected_.empty()) {
    return nullptr;
  }
  std::shared_ptr<NamedPipeInstance> client = std::move(connected_.front().instance);
  connected_.pop_front();
  return client;
}

void PipeObserver::Wait(std::uint32_t timeout_ms) {
  std::vector<Platform::Waitable> things{stop_, wake_};
  for (Listening& instance : listening_) {
    things.emplace_back(*instance.connecting);
  }
  if (Platform::WaitForAny(things, UntilRetry(timeout_ms)) == Platform::kWaitFailed) {
    const Win32Exception error("Wait on overlap event failed");
    Postpone();
    Platform::WaitForEvent(stop_, UntilRetry(Platform::kInfinite));
    throw error;
  }
}

void PipeObserver::TakeConnected() {
  bool taken = true;
  while (taken && connected_.size() < MultiClientNamedPipeServer::LISTENING_INSTANCES) {
    taken = false;
    for (auto next = listening_.begin(); next != listening_.end();) {
      const auto instance = next++;
      std::uint32_t unused = 0;
      const Platform::ErrorCode code = instance->connecting->Finish(unused);
      if (code == Platform::kSuccess) {
        connected_.splice(connected_.end(), listening_, instance);
        taken = true;
      } else if (code != Platform::kIoIncomplete) {
        ReportFailure(L"A client is lost",
                      "Error reading pending IO from named pipe while connecting. Error Code:", code);
        listening_.erase(instance);
      }
    }
    ListenAgain();
  }
}

void PipeObserver::Connect() {
  std::list<Listening> made(1);
  Listening& listening = made.front();
  listening.instance = std::make_shared<NamedPipeInstance>();
  NamedPipeInstance& instance = *listening.instance;
  if (const Platform::ErrorCode error = Platform::CreatePipeInstance(settings_, instance.pipe);
      error != Platform::kSuccess) {
    throw Win32Exception("Can't create named pipe", error);
  }
  latest_ = instance.pipe;
  listening.connecting = std::make_unique<Platform::PipeOperation>(instance.pipe, instance.event, instance.overlapped);
  const Platform::ErrorCode error = listening.connecting->BeginConnect();
  if (error != Platform::kPipeConnected && error != Platform::kIoPending) {
    throw Win32Exception("can't connect to client:", error);
  }
  listening_.splice(listening_.end(), made);
}

void PipeObserver::ListenAgain() noexcept {
  if (failures_ != 0 && Clock::now() < retry_at_) {
    return;
  }
  try {
    while (listening_.size() < InstancesToListenWith()) {
      Connect();
      failures_ = 0;
    }
  } catch (...) {
    ReportCurrentException(L"Exception listening on a named pipe");
    Postpone();
  }
}

void PipeObserver::Postpone() noexcept {
  const std::uint32_t pause = std::min(kFirstRetryMs << std::min(failures_, 10U), kLastRetryMs);
  ++failures_;
  retry_at_ = Clock::now() + std::chrono::milliseconds(pause);
}

std::uint32_t PipeObserver::UntilRetry(std::uint32_t timeout_ms) const noexcept {
  if (failures_ == 0) {
    return timeout_ms;
  }
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(retry_at_ - Clock::now()).count() + 1;
  return std::min(timeout_ms, static_cast<std::uint32_t>(std::clamp<std::int64_t>(left, 0, kLastRetryMs)));
}

}  // namespace Zelto::Utilities
