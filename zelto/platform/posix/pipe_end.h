/// @file
/// One end of a message pipe: its socket and what is under way on it. Not installed.
#pragma once

#include "zelto/platform/errors.h"
#include "zelto/platform/handle_state.h"
#include "zelto/platform/posix/descriptor.h"
#include "zelto/platform/posix/pipe_listener.h"

#include <sys/socket.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace Zelto::Platform {

/// The space into which a packet runs over that is larger than the reader's buffer. Pages are used as they are
/// needed, and given back after a large packet.
class PacketOverflow {
 public:
  static constexpr std::size_t kSize = std::size_t{512} * 1024;

  PacketOverflow() noexcept = default;
  ~PacketOverflow();
  PacketOverflow(const PacketOverflow&) = delete;
  PacketOverflow& operator=(const PacketOverflow&) = delete;

  /// Reserves the space if need be. @return null when there is no memory
  char* Data() noexcept;
  /// Says how much of it a packet filled.
  void Fill(std::size_t size) noexcept;
  std::uint32_t Left() const noexcept { return static_cast<std::uint32_t>(size_ - served_); }
  /// Copies at most `size` bytes of what is left. @return how many
  std::uint32_t Take(void* buffer, std::uint32_t size) noexcept;
  void Clear() noexcept;

 private:
  char* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t served_ = 0;
};

/// One end. One read and any number of writes may be under way, on several threads; `Disconnect` may come from any.
class PipeEnd {
 public:
  explicit PipeEnd(UniqueDescriptor client) noexcept;     ///< a client's end
  explicit PipeEnd(PipeListenerShare listener) noexcept;  ///< a server's instance, not yet connected
  explicit PipeEnd(int borrowed) noexcept;                ///< a client's end on a descriptor that its owner closes
  ~PipeEnd();
  PipeEnd(const PipeEnd&) = delete;
  PipeEnd& operator=(const PipeEnd&) = delete;

  /// Whether a caller's descriptor is a connected packet socket; prepares it then.
  static bool CanAdopt(int descriptor) noexcept;

  /// The connected socket; before the first connection the listening one.
  int Descriptor() const noexcept;

  /// Takes a client. @return `kPipeConnected`, `kIoPending` or the error
  ErrorCode Accept() noexcept;
  /// @return 0; `kPipeListening` or `kPipeNotConnected` without a connection; `kInvalidHandle` for a client's end
  ErrorCode Disconnect() noexcept;
  ErrorCode Peer(ucred& peer) const noexcept;

  /// Reads without touching the socket. @return `kIoPending` when the next packet must be waited for
  ErrorCode ReadAtHand(void* buffer, std::uint32_t size, std::uint32_t& read) noexcept;
  /// Reads on, from the socket if need be, and waits there for up to `wait_ms` where it can: the wait may be shorter.
  /// @return `kIoPending` when nothing has come
  ErrorCode Read(void* buffer, std::uint32_t size, std::uint32_t& read, std::uint32_t wait_ms = 0) noexcept;

  /// Sends a message, or queues it behind the others when it cannot be sent now. `writer` names the write, as long as
  /// it is pending. @return 0, `kIoPending` or the error
  ErrorCode BeginWrite(const void* writer, const void* data, std::uint32_t size) noexcept;
  /// Tries a pending write again if it is the first. @return as `BeginWrite`
  ErrorCode ContinueWrite(const void* writer, const void* data, std::uint32_t size) noexcept;
  void CancelWrite(const void* writer) noexcept;
  /// Whether this write may send as soon as the socket takes more.
  bool IsNextWrite(const void* writer) noexcept;

 private:
  bool IsServer() const noexcept { return listener_ != nullptr; }
  ErrorCode Usable() const noexcept;
  ErrorCode Receive(void* buffer, std::uint32_t size, std::uint32_t& read, std::uint32_t wait_ms) noexcept;
  bool PrepareWait(std::uint32_t wait_ms) noexcept;
  ErrorCode ServeMemory(void* buffer, std::uint32_t size, std::uint32_t& read) noexcept;
  ErrorCode Send(const void* data, std::uint32_t size, ErrorCode gone) noexcept;
  ErrorCode SendMemory(const void* data, std::uint32_t size) noexcept;
  void Forget() noexcept;

  const PipeListenerShare listener_;
  std::atomic<int> socket_{-1};
  const bool owned_ = true;
  std::atomic<bool> disconnected_{false};

  std::mutex read_lock_;
  PacketOverflow overflow_;
  std::uint32_t socket_wait_ms_ = kInfinite;  // what the socket's own time-out is set to
  UniqueDescriptor memory_;                   // the message being read, when it came as a memory file
  std::uint32_t memory_size_ = 0;
  std::uint32_t memory_served_ = 0;
  ErrorCode read_failure_ = kSuccess;  // for good: the peer is gone or broke the rules

  std::mutex write_lock_;
  std::vector<const void*> writers_;  // the pending ones, first in first out
  UniqueDescriptor outgoing_;         // the first one's memory file
  std::uint64_t memory_on_way_ = 0;   // bytes of memory files sent since the peer had last received everything
};

/// Shares an end.
class PipeHandle final : public HandleState {
 public:
  template <class... Arguments>
  explicit PipeHandle(Arguments&&... arguments) noexcept : end_(std::forward<Arguments>(arguments)...) {}
  void* Native() const noexcept override { return HandleFromDescriptor(end_.Descriptor()); }
  PipeEnd* Pipe() noexcept override { return &end_; }

 private:
  PipeEnd end_;
};

}  // namespace Zelto::Platform
