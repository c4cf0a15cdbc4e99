/// @file
/// A message pipe's server for many clients.
#pragma once

#include <zelto/export.h>
#include <zelto/pipes/active_named_pipe_server_connection.h>
#include <zelto/pipes/named_pipe_instance.h>
#include <zelto/pipes/named_pipe_message_encoding.h>
#include <zelto/pipes/pipe_authentication.h>
#include <zelto/platform/shared_handle.h>
#include <zelto/threading/critical_section.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Zelto::Utilities {

class PipeObserver;

/// Serves any number of clients on one pipe. See `MultiClientNamedPipeServer`.
class ZELTO_API IMultiClientNamedPipeServer {
 public:
  IMultiClientNamedPipeServer() = default;
  virtual ~IMultiClientNamedPipeServer() = default;
  IMultiClientNamedPipeServer(const IMultiClientNamedPipeServer&) = delete;
  IMultiClientNamedPipeServer& operator=(const IMultiClientNamedPipeServer&) = delete;

  /// Starts to accept clients; nothing when it has started. At its return the pipe is there for clients to open; when
  /// it cannot be made, the diagnostics sink has heard of it and the server goes on trying, every two seconds at last.
  ///
  /// @param authenticate  judges each client; empty accepts all
  /// @throws Win32Exception     "Failed to create event"
  /// @throws std::system_error  without a thread to start
  virtual void Start(PipeAuthenticationCallback authenticate) = 0;

  /// Ends every connection and waits until no thread of the server runs, so until the callbacks that are running have
  /// returned; nothing when it has not started. Clients see the end at once; what they have not read is lost on
  /// Windows. The dropped callback does not run for them.
  ///
  /// Inside one of the server's own callbacks it waits for nothing: callbacks that are running come to their end, later
  /// ones do not begin, and the next `Stop` from elsewhere, or the last owner's end, waits for what is left. A client
  /// that opens the pipe at that moment may find its connection ended, even if the server starts again at once.
  virtual void Stop() = 0;

  /// Replaces the message callback, for new clients and those that are connected. A call of the former one may still be
  /// running. An empty one leaves all messages without an answer.
  virtual void SetReceiveCallBack(MessageReceivedCallback message_received) = 0;

  /// The full name, with its prefix.
  virtual std::wstring GetPipeName() const = 0;
};

/// Serves any number of clients on one pipe.
///
/// An observer thread waits for clients and has each judged; each accepted client has a thread that reads its messages,
/// calls the message callback and writes the answer. A client can cost itself its connection and nobody anything else;
/// failures are told to the diagnostics sink.
///
/// Callbacks run without a lock of the server, so they may call any operation of it. They must not block for long: a
/// slow message callback holds up its own client, a slow authentication callback all new ones, and `Stop` waits for
/// both. Any thread may call. The last owner's end stops the server, as `Stop` does.
/// ```
/// const auto server = MultiClientNamedPipeServer::Create(
///     L"Service", [](unsigned int, const std::wstring& message) { return L"got " + message; },
///     NamedPipeMessageEncoding::Utf8, 5000, 4096, false, [](unsigned int) {});
/// server->Start({});
/// ```
class ZELTO_API MultiClientNamedPipeServer final : public IMultiClientNamedPipeServer {
 public:
  /// Instances that a server keeps listening on Windows, so that clients that come at once find room. On Linux one is
  /// enough: the system queues clients.
  static const std::uint32_t LISTENING_INSTANCES = 60;

  /// Makes a server that is not started.
  ///
  /// @param pipe_name         gets the prefix `\\.\pipe\` unless it has it
  /// @param message_received  may be empty: messages then get no answer
  /// @param timeout_ms        the pipe's default time-out for clients that wait for a free instance
  /// @param buffer_size       the pipe's buffers, in bytes, and the read chunk, in code units; 0 counts as 4096, and a
  ///                          chunk has at most 0x7FFFFFFF units
  /// @param allow_everyone    every user may connect, and on Windows also make further instances of the pipe; otherwise
  ///                          only the server's user and root (Linux), or the server's user, administrators and the
  ///                          system (Windows). Other users find a Linux server only if it may use /run/zelto. More
  ///                          in docs/security.md.
  /// @param client_dropped    called once for each accepted client that goes away or is dropped; must be set: otherwise
  ///                          `std::bad_function_call` is reported in its place
  /// @throws std::runtime_error  "Named pipe name should not be empty"
  static std::shared_ptr<MultiClientNamedPipeServer> Create(const std::wstring& pipe_name,
                                                            MessageReceivedCallback message_received,
                                                            NamedPipeMessageEncoding encoding, std::uint32_t timeout_ms,
                                                            std::uint32_t buffer_size, bool allow_everyone,
                                                            ClientDroppedCallback client_dropped);

  ~MultiClientNamedPipeServer() override;

  void Start(PipeAuthenticationCallback authenticate) override;
  void Stop() override;
  void SetReceiveCallBack(MessageReceivedCallback message_received) override;
  std::wstring GetPipeName() const override { return pipe_name_; }

  /// True between `Start` and `Stop`.
  bool IsStarted() const;

  /// Drops clients that send a message of more bytes, before it is gathered; 0, the default, means no limit. For
  /// clients that connect afterwards.
  void SetMaximumMessageSize(std::uint64_t bytes) noexcept { maximum_message_size_ = bytes; }

  /// The message callback's answer; empty without a callback.
  std::wstring CallMessageReceivedCallback(unsigned int id, std::wstring message);

  /// Calls the dropped callback, then lets go of the connection. Connections do so when their client has gone; called
  /// for one that is alive it ends it.
  ///
  /// @throws std::bad_function_call  without a dropped callback; the connection is let go all the same
  void CallClientDroppedCallback(unsigned int id);

 private:
  struct Session;
  class CallbackScope;

  MultiClientNamedPipeServer(std::wstring pipe_name, MessageReceivedCallback message_received,
                             NamedPipeMessageEncoding encoding, std::uint32_t timeout_ms, std::uint32_t buffer_size,
                             bool allow_everyone, ClientDroppedCallback client_dropped);

  void WaitForConnections(Session& session, PipeObserver& observer);
  bool AuthenticateClient(const Session& session, const SharedHandle& pipe);
  void AddActiveConnectionThread(Session& session, std::shared_ptr<NamedPipeInstance> instance);
  bool ClearClosedConnections(Session& session);
  void RemoveActiveConnection(unsigned int id);
  void EndSession();
  void JoinEndedSessions();
  void JoinSessionsAtTheirEnd();
  static void StopObserverThread(Session& session) noexcept;
  static void ClearActiveConnections(Session& session) noexcept;

  mutable CriticalSection server_lock_;  // guards what is not constant or atomic
  std::mutex join_lock_;                 // held while sessions are joined; never taken on their threads
  const std::wstring pipe_name_;
  const std::uint32_t timeout_ms_;
  const std::uint32_t buffer_size_;
  std::atomic<unsigned int> next_id_ = 0;
  std::atomic<std::uint64_t> maximum_message_size_ = 0;
  const NamedPipeMessageEncoding encoding_;
  const bool allow_everyone_;
  std::shared_ptr<const MessageReceivedCallback> message_received_;
  const ClientDroppedCallback client_dropped_;
  std::shared_ptr<Session> session_;                      // from `Start` to `Stop`
  std::vector<std::shared_ptr<Session>> ended_sessions_;  // stopped, to be joined
  std::weak_ptr<MultiClientNamedPipeServer> self_;        // what the threads hold, without the owners' stop
};

}  // namespace Zelto::Utilities
