/// @file
/// The client's side of a message pipe.
#pragma once

#include <zelto/export.h>
#include <zelto/pipes/named_pipe_message_encoding.h>
#include <zelto/pipes/pipe_authentication.h>
#include <zelto/platform/errors.h>
#include <zelto/platform/shared_handle.h>
#include <zelto/threading/task.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace Zelto::Utilities {

class ClientPipeInstance;

/// The client's end of a message pipe: whole text messages, read and written as tasks. See `AsyncNamedPipeClient`.
class ZELTO_API IAsyncNamedPipeClient {
 public:
  /// The time-out, in milliseconds, of a client that is built with 0.
  static const std::uint32_t DEFAULT_TIMEOUT = 5000;

  IAsyncNamedPipeClient() = default;
  virtual ~IAsyncNamedPipeClient() = default;
  IAsyncNamedPipeClient(const IAsyncNamedPipeClient&) = delete;
  IAsyncNamedPipeClient& operator=(const IAsyncNamedPipeClient&) = delete;

  /// Starts to write one message; `get` on the task waits for the end and throws what went wrong.
  ///
  /// @param message              must not hold U+0000, at which a receiver cuts a chunk; may be empty
  /// @param wait_for_completion  true: the task ends when the system has taken the whole message, within the client's
  ///                             time-out. False: it ends when the system has accepted the write, even if the server
  ///                             does not read; the message is still delivered when the calling thread ends or the
  ///                             client goes, as long as the process lives.
  /// @throws (by the task) std::runtime_error  "Pipe already closed" without an open pipe
  /// @throws (by the task) std::runtime_error  "Timeout 5000 expired while writing to named pipe", with its
  /// milliseconds
  /// @throws (by the task) Win32Exception      "Disconnected", 233, when the server has ended the connection;
  ///                                           "Error writing to named pipe" with the error otherwise, which is 997
  ///                                           for every write that began and failed later
  /// @throws (by the task) std::range_error    "bad conversion" when the text is not well-formed
  virtual Task<void> WriteMessage(const std::wstring& message, bool wait_for_completion = true) = 0;

  /// Starts to read one message; `get` on the task waits for it. Each chunk of 4096 code units is waited for by the
  /// client's time-out and decoded on its own: a UTF-8 sequence across a chunk's end is a bad conversion.
  ///
  /// @throws (by the task) std::runtime_error  "Pipe already closed" without an open pipe
  /// @throws (by the task) std::runtime_error  "Timeout expired while reading from named pipe"
  /// @throws (by the task) Win32Exception      "Error reading from named pipe" with the error, when the server is gone
  ///                                           for example
  /// @throws (by the task) std::range_error    "bad conversion"; the next read begins with the next message
  virtual Task<std::wstring> ReadMessage() = 0;

  virtual NamedPipeMessageEncoding GetEncoding() const = 0;
  /// For reads and writes started afterwards.
  virtual void SetEncoding(NamedPipeMessageEncoding encoding) = 0;

  virtual std::uint32_t GetTimeout() const = 0;
  /// Milliseconds, for what is started afterwards; 0 only looks, 0xFFFFFFFF waits without a limit.
  virtual void SetTimeout(std::uint32_t timeout_ms) = 0;

  /// Connects, unless an open pipe is held already. Blocks: up to 5 attempts with a pause of 200 ms behind each, and
  /// while every instance of the pipe is busy a wait of up to the time-out in each.
  ///
  /// @param pipe  an open pipe to use instead of connecting; not authenticated. May be empty.
  /// @throws Win32Exception  "Failed to connect to the pipe: " and the full name, with the last attempt's error (2 or
  ///                         231); "Error opening named pipe: " and the full name, with any other error of an attempt;
  ///                         the same and ". Signature is invalid", 191, when the authentication callback refuses the
  ///                         server; "Failed to change NamedPipe state". No handle is held then.
  virtual void Open(SharedHandle pipe = SharedHandle()) = 0;

  /// Lets go of the pipe; `Open` connects anew. Waits for a read or write that has begun (at most its time-out); writes
  /// started before are sent; those that nobody waits for get one time-out to be done. Reads that have not begun fail
  /// with "Pipe already closed".
  virtual void Close() = 0;

  /// True once a pipe was opened and switched to messages; it stays so after `Close`.
  virtual bool IsInitialized() const = 0;

  /// Sets who judges the server when a pipe is opened; empty accepts all. Set it before use. The
  /// callback judges the handle that it is given; it must not use the client.
  virtual void SetAuthenticatePipe(PipeAuthenticationCallback callback) = 0;
};

/// Connects to a pipe of a `MultiClientNamedPipeServer`, or any message pipe, on this machine.
///
/// Any thread may call. Tasks of one client run one at a time, in the order in which they were started, on the thread
/// that waits for one or on the library's pool (see `Task`); a read that waits holds up the writes behind it. Encoding,
/// time-out and callback are read without a lock and meant to be set before use. Destroying the client neither waits
/// for its tasks nor cancels them; the pipe closes when the last of them is done.
/// ```
/// const auto client = std::make_shared<AsyncNamedPipeClient>(L"Service", 0);
/// client->Open();
/// client->WriteMessage(L"{\"command\":\"status\"}").get();
/// const std::wstring answer = client->ReadMessage().get();
/// ```
class ZELTO_API AsyncNamedPipeClient : public IAsyncNamedPipeClient {
 public:
  static const std::uint32_t MAX_ATTEMPTS_COUNT = 5;   ///< attempts of `Open`
  static const std::uint32_t MAX_MESSAGE_SIZE = 4096;  ///< code units of one chunk

  /// Opens nothing yet. The encoding is UTF-8.
  ///
  /// @param pipe_name   gets the prefix `\\.\pipe\` unless it has it
  /// @param timeout_ms  of every read and write, and of the wait for a busy pipe; 0 means `DEFAULT_TIMEOUT`
  /// @throws std::runtime_error  "Named pipe name should not be empty"
  explicit AsyncNamedPipeClient(const std::wstring& pipe_name, std::uint32_t timeout_ms = DEFAULT_TIMEOUT);
  ~AsyncNamedPipeClient() override;

  Task<void> WriteMessage(const std::wstring& message, bool wait_for_completion = true) override;
  Task<std::wstring> ReadMessage() override;
  NamedPipeMessageEncoding GetEncoding() const override { return encoding_; }
  void SetEncoding(NamedPipeMessageEncoding encoding) override { encoding_ = encoding; }
  std::uint32_t GetTimeout() const override { return timeout_ms_; }
  void SetTimeout(std::uint32_t timeout_ms) override { timeout_ms_ = timeout_ms; }
  void Open(SharedHandle pipe = SharedHandle()) override;
  void Close() override;
  bool IsInitialized() const override { return initialized_; }
  void SetAuthenticatePipe(PipeAuthenticationCallback callback) override;

 protected:
  /// Connects, with the handle given or by itself. Throws as `Open`.
  void Init(SharedHandle pipe);

  /// Makes one attempt. @return false when the pipe is not there yet or busy. Throws as `Open`.
  bool OpenNamedPipe();

  /// The callback's answer for the pipe and false, true without a callback. A throwing callback refuses.
  bool AuthenticateDestinationServer();

 private:
  std::string NameInUtf8() const;

  PipeAuthenticationCallback authenticate_;
  const std::shared_ptr<ClientPipeInstance> instance_;
  std::atomic<std::uint32_t> timeout_ms_;
  std::atomic<bool> initialized_ = false;
  std::atomic<NamedPipeMessageEncoding> encoding_ = NamedPipeMessageEncoding::Utf8;
  Platform::ErrorCode open_error_ = 0;  // of the last attempt; guarded by the instance's lock
};

}  // namespace Zelto::Utilities
