/// @file
/// The server's side of one client.
#pragma once

#include <zelto/export.h>
#include <zelto/pipes/named_pipe_instance.h>
#include <zelto/pipes/named_pipe_message_encoding.h>
#include <zelto/platform/shared_handle.h>
#include <zelto/threading/critical_section.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace Zelto::Utilities {

class AsyncIOBuffer;

/// Given a connection's ID and a message, returns the answer; an empty one is not sent. Runs on the connection's
/// thread, one message at a time per client; different clients' at the same time. One that throws costs the client its
/// connection, and the diagnostics sink hears of it. The message is the callback's own: one that takes it by value may
/// move from it.
using MessageReceivedCallback = std::function<std::wstring(unsigned int id, std::wstring message)>;

/// Given the ID of a connection whose client has gone. Runs once, as the last thing on the connection's thread.
using ClientDroppedCallback = std::function<void(unsigned int id)>;

/// The server's side of one client. See `ActiveNamedPipeServerConnection`.
class ZELTO_API IActiveNamedPipeServerConnection {
 public:
  IActiveNamedPipeServerConnection() = default;
  virtual ~IActiveNamedPipeServerConnection() = default;
  IActiveNamedPipeServerConnection(const IActiveNamedPipeServerConnection&) = delete;
  IActiveNamedPipeServerConnection& operator=(const IActiveNamedPipeServerConnection&) = delete;

  /// Starts the connection's thread; nothing when it runs. @throws std::system_error without a thread to start
  virtual void Start() = 0;

  /// Ends the connection: what the client has not read is lost on Windows, and the dropped callback does not run. Waits
  /// for the thread, that is for a callback that is running; called on that thread it waits for nothing.
  virtual void Stop() = 0;

  /// True from `Start` until `Stop`, or until the client has gone and the dropped callback has run.
  virtual bool IsRunning() const = 0;
};

/// Reads a client's messages on a thread of its own, asks the callback for each that is not empty and writes its answer
/// back. Made by the server for each client it accepts.
///
/// The connection ends by itself when the client goes away, sends what cannot be decoded, exceeds the size limit, or
/// leaves an answer unread for 10 seconds, and when the callback throws. The pipe is then disconnected and the dropped
/// callback called; the instance's handle is let go at the thread's end. When the last owner goes the connection is
/// stopped. Any thread may call.
class ZELTO_API ActiveNamedPipeServerConnection final : public IActiveNamedPipeServerConnection {
 public:
  static const std::uint32_t RESPONSE_TIMEOUT = 10000;  ///< milliseconds that a client has to take an answer

  /// Makes a connection that does not run yet.
  ///
  /// @param instance     a pipe instance with a client
  /// @param timeout_ms   the server's time-out, which bounds nothing here: reads wait without a limit, and answers for
  ///                     `RESPONSE_TIMEOUT`
  /// @param buffer_size  read chunk in code units; 0 counts as 4096, and more than 0x7FFFFFFF as that
  /// @throws Win32Exception  "ActiveNamedPipeServerConnection: Failed to create stop event."
  static std::shared_ptr<ActiveNamedPipeServerConnection> Create(unsigned int id,
                                                                 std::shared_ptr<NamedPipeInstance> instance,
                                                                 std::uint32_t timeout_ms, std::uint32_t buffer_size,
                                                                 NamedPipeMessageEncoding encoding,
                                                                 MessageReceivedCallback message_received,
                                                                 ClientDroppedCallback client_dropped);

  ~ActiveNamedPipeServerConnection() override;

  void Start() override;
  void Stop() override;
  bool IsRunning() const override { return current_run_ != kNoRun; }

  /// Ends the connection as `Stop` does, but waits for nothing. `Stop` must follow.
  void RequestStop() noexcept;

  /// True when the thread is past its last callback, or was never started: `Stop` then takes no time.
  bool HasEnded() const noexcept { return threads_ == 0; }

  /// Messages of more bytes end the connection before they are gathered; 0, the default, means no limit.
  void SetMaximumMessageSize(std::uint64_t bytes) noexcept { maximum_message_size_ = bytes; }

  /// Writes one message. Waits for a read that is under way, so it is of use in the message callback only.
  ///
  /// @return false when the client has gone, has not taken the message within 10 seconds, or the connection stops
  /// @throws Win32Exception   "Error writing to named pipe", with any other error
  /// @throws std::range_error  "bad conversion" when the text is not well-formed
  bool Respond(const std::wstring& message);

 private:
  static constexpr std::uint64_t kNoRun = 0;

  ActiveNamedPipeServerConnection(unsigned int id, std::shared_ptr<NamedPipeInstance> instance,
                                  std::uint32_t buffer_size, NamedPipeMessageEncoding encoding,
                                  MessageReceivedCallback message_received, ClientDroppedCallback client_dropped);

  void Disconnect() noexcept;
  void Run(std::uint64_t run) noexcept;
  void ReceiveData(std::uint64_t run);
  bool ReadMessage(AsyncIOBuffer& buffer, std::wstring& message);
  void Release(std::thread thread) noexcept;

  const unsigned int id_;
  std::uint64_t last_run_ = kNoRun;  // guarded by the state lock
  std::atomic<std::uint64_t> current_run_ = kNoRun;
  std::atomic<int> threads_ = 0;  // more than one after a stop and a start inside a callback
  CriticalSection io_lock_;
  CriticalSection pipe_lock_;  // with the I/O lock, for letting go of the instance's pipe
  const std::shared_ptr<NamedPipeInstance> instance_;
  const std::uint32_t buffer_size_;
  const NamedPipeMessageEncoding encoding_;
  const MessageReceivedCallback message_received_;
  const ClientDroppedCallback client_dropped_;
  CriticalSection state_lock_;
  std::thread thread_;  // guarded by the state lock
  const SharedHandle stop_event_;
  std::atomic<std::uint64_t> maximum_message_size_ = 0;
  std::weak_ptr<ActiveNamedPipeServerConnection> self_;  // what the thread holds, without the owners' stop
};

}  // namespace Zelto::Utilities
