/// @file
/// The client's end of one pipe. Not installed.
#pragma once

#include <zelto/pipes/async_io_buffer.h>
#include <zelto/pipes/detached_writer.h>
#include <zelto/pipes/named_pipe_message_encoding.h>
#include <zelto/platform/message_pipe.h>
#include <zelto/platform/shared_handle.h>
#include <zelto/threading/critical_section.h>
#include <zelto/threading/serial_task_queue.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>

namespace Zelto::Utilities {

/// A message in the form in which it is sent, or the reason why it has none.
class OutgoingMessage {
 public:
  OutgoingMessage(NamedPipeMessageEncoding encoding, const std::wstring& message) noexcept;

  /// @throws what encoding the message threw
  AsyncIOBuffer& Buffer();

 private:
  std::optional<AsyncIOBuffer> buffer_;
  std::exception_ptr failure_;
};

/// The state of one opened pipe, shared by its client and the client's tasks. Its lock is held for the whole of each
/// read and each write, the waits included.
class ClientPipeInstance {
 public:
  /// @param full_name  with the prefix
  explicit ClientPipeInstance(std::wstring full_name);
  ~ClientPipeInstance();
  ClientPipeInstance(const ClientPipeInstance&) = delete;
  ClientPipeInstance& operator=(const ClientPipeInstance&) = delete;

  /// Reads one message. Throws as `IAsyncNamedPipeClient::ReadMessage` tells.
  std::wstring Read(NamedPipeMessageEncoding encoding, std::uint32_t timeout_ms);

  /// Writes one message. Throws as `IAsyncNamedPipeClient::WriteMessage` tells.
  void Write(OutgoingMessage& message, bool wait_for_completion, std::uint32_t timeout_ms);

  /// Lets go of the handle, behind the tasks that were issued before. Reads of those that have not begun fail; writes
  /// that nobody waits for get the time-out to be done.
  void Close(std::uint32_t timeout_ms);

  CriticalSection lock;
  SharedHandle pipe;        ///< guarded by the lock; empty while closed
  const std::wstring name;  ///< full name
  SharedHandle event;       ///< completion event of the operation under way, made afresh for each
  Platform::OverlappedRecord overlapped;
  const std::shared_ptr<SerialTaskQueue> tasks;  ///< the client's reads and writes, in the order they were issued

 private:
  void RequireOpen() const;
  void CloseNow(std::uint32_t timeout_ms) noexcept;

  std::optional<AsyncIOBuffer> read_buffer_;  // of the last read's encoding; guarded by the lock
  const std::shared_ptr<DetachedWriter> detached_writer_;
  std::atomic<int> closing_ = 0;
};

}  // namespace Zelto::Utilities
