/// @file
/// How a server waits for clients. Not installed.
#pragma once

#include <zelto/pipes/named_pipe_instance.h>
#include <zelto/platform/message_pipe.h>
#include <zelto/platform/shared_handle.h>

#include <chrono>
#include <cstdint>
#include <list>
#include <memory>

namespace Zelto::Utilities {

/// Keeps a number of pipe instances listening and hands out each as a client connects to it. Belongs to one thread.
///
/// A failure is reported to the diagnostics sink and tried again after a pause, which grows to two seconds.
class PipeObserver {
 public:
  /// @param stop, wake  events that end a wait
  PipeObserver(Platform::PipeSettings settings, SharedHandle stop, SharedHandle wake);
  /// Disconnects the clients that nobody was handed, so that they learn of the end as others do.
  ~PipeObserver();
  PipeObserver(const PipeObserver&) = delete;
  PipeObserver& operator=(const PipeObserver&) = delete;

  /// Has instances listen where there are too few. What fails is reported, and left alone until its pause is over.
  void ListenAgain() noexcept;

  /// Waits for a client. Of several that have connected all are taken, and other instances listen in place of theirs,
  /// before the first is handed out.
  ///
  /// @return the instance; null when an event or the time-out came first
  std::shared_ptr<NamedPipeInstance> WaitForNewClient(std::uint32_t timeout_ms);

 private:
  using Clock = std::chrono::steady_clock;

  struct Listening {
    std::shared_ptr<NamedPipeInstance> instance;
    std::unique_ptr<Platform::PipeOperation> connecting;
  };

  void Connect();
  void Wait(std::uint32_t timeout_ms);
  void TakeConnected();
  std::uint32_t UntilRetry(std::uint32_t timeout_ms) const noexcept;
  void Postpone() noexcept;

  const Platform::PipeSettings settings_;
  const SharedHandle stop_;
  const SharedHandle wake_;
  SharedHandle latest_;  // keeps the pipe's name, and clients that wait for it, while no instance can listen
  // Lists, so that a client who has connected needs no memory to be moved on.
  std::list<Listening> listening_;
  std::list<Listening> connected_;
  std::uint32_t failures_ = 0;
  Clock::time_point retry_at_;
};

}  // namespace Zelto::Utilities
