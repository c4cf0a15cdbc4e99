/// @file
/// Named pipes in message mode with overlapped operations: what the pipe classes need of the operating system.
///
/// Windows: named pipes under `\\.\pipe\`. Linux: `SOCK_SEQPACKET` sockets with one packet per message and no header;
/// a message too large for a packet travels as an empty packet with one sealed memory file. Every function returns
/// Win32 codes on both targets. The table of the codes for each way of losing the peer stands in docs/pipes.md.
///
/// A pipe's end may be used on several threads, with one read and any number of writes under way at a time.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/errors.h>
#include <zelto/platform/events.h>
#include <zelto/platform/shared_handle.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace Zelto::Platform {

/// What `CreatePipeInstance` needs.
struct PipeSettings {
  std::wstring name;                      ///< full name, with the prefix `\\.\pipe\`
  std::uint32_t maximum_instances = 255;  ///< of this name, 1 to 254; 255 means no limit. The first instance's counts.
  std::uint32_t buffer_size = 4096;       ///< input and output buffer, bytes; a hint on Windows, unused on Linux
  std::uint32_t default_timeout_ms = 0;   ///< Windows: of `WaitForFreePipe` with time-out 0; 0 means 50 ms
  /// Every user may connect, and on Windows also make further instances. Otherwise only the server's user and root
  /// (Linux), or the server's user, administrators and the system (Windows: others may read, but `OpenPipe` asks for
  /// more). Linux: a server that may not use /run/zelto has its pipe in a directory of its user, where others do not
  /// look.
  bool allow_everyone = false;
};

/// Makes one more instance of a pipe, on which one client at a time can be served.
///
/// @param[out] pipe  the instance; changed only on success
/// @return 0; `kPipeBusy` when the name has `maximum_instances` already; `kAccessDenied` when another process owns the
///         name (Linux) or forbids more instances (Windows); `kInvalidName`; otherwise the system's error
///
/// Windows: `CreateNamedPipeW`, duplex, overlapped, message mode; with `allow_everyone` under a null DACL and an
/// inheritable handle. Linux: the first instance binds the socket and all share it; descriptors are close-on-exec.
/// Clients that no instance has taken yet are queued, up to the system's limit or, with a limit, one per instance.
ZELTO_API ErrorCode CreatePipeInstance(const PipeSettings& settings, Utilities::SharedHandle& pipe);

/// Makes one attempt to open the client's end of a pipe.
///
/// @param[out] pipe  the client's end; changed only on success
/// @return 0; `kFileNotFound` (no server); `kPipeBusy` (no instance free); `kAccessDenied`; otherwise the error
///
/// Windows: `CreateFileW`. Linux: `connect`; the name is looked up in the system's directory first, then in the
/// user's own; a socket or server that belongs to a stranger is refused with `kAccessDenied`.
ZELTO_API ErrorCode OpenPipe(const std::wstring& name, Utilities::SharedHandle& pipe);

/// Switches a client's end to reading whole messages. Windows: `SetNamedPipeHandleState`. Linux: only checks the
/// handle.
ZELTO_API ErrorCode SetMessageReadMode(const Utilities::SharedHandle& pipe) noexcept;

/// Waits until the pipe has a free instance. Windows: `WaitNamedPipeW`. Linux: whether there is room shows only by
/// connecting, so this looks for the pipe and holds the caller off for at most 20 ms.
///
/// @return 0 (Linux: worth another try), `kTimeout`, `kFileNotFound` or `kInvalidName`
ZELTO_API ErrorCode WaitForFreePipe(const std::wstring& name, std::uint32_t timeout_ms) noexcept;

/// Ends the server's side of a connection: pending and later operations of both ends fail, and what the client has
/// not read is lost (Windows; on Linux it can still read it). The instance can serve another client afterwards.
///
/// May be called while operations of other threads are under way. Windows: `DisconnectNamedPipe`. Linux: `shutdown`.
/// @return 0; `kPipeNotConnected` or `kPipeListening` without a connection; otherwise the error (`kInvalidHandle`)
ZELTO_API ErrorCode DisconnectPipe(const Utilities::SharedHandle& pipe) noexcept;

/// How many instances a server should keep listening so that a burst of clients finds room.
///
/// Windows: each listening instance takes one client, so many. Linux: one, the system queues clients.
ZELTO_API std::uint32_t ListeningInstances() noexcept;

/// Whether `DisconnectPipe` by itself ends a read that another thread waits for, so that this one needs no event to be
/// stopped by. Windows: no. Linux: yes, and a read that is waited for alone costs one system call.
ZELTO_API bool DisconnectEndsReads() noexcept;

/// The process at the other end of a pipe.
struct PipePeer {
  std::uint32_t process_id = 0;          ///< as it was when the connection was made; the process may be gone
  std::optional<std::uint32_t> user_id;  ///< Linux: the peer's effective user; Windows: not given
};

/// Tells who is at the other end. `server_side` says which end `pipe` is: true for a server's.
///
/// Windows: `GetNamedPipeClientProcessId` or `GetNamedPipeServerProcessId`. Linux: `SO_PEERCRED`.
/// @return 0, or the error (`kInvalidHandle`, `kPipeNotConnected`)
ZELTO_API ErrorCode GetPipePeer(const Utilities::SharedHandle& pipe, bool server_side, PipePeer& peer) noexcept;

/// The record of one overlapped operation. It has the layout of `OVERLAPPED` on both targets; Linux uses none of it but
/// the offset. It must not move while an operation is under way.
struct OverlappedRecord {
  std::uintptr_t internal = 0;
  std::uintptr_t internal_high = 0;
  std::uint32_t offset = 0;
  std::uint32_t offset_high = 0;
  void* event = nullptr;
};

/// One connect, read or write on a pipe, from its beginning to its end.
///
/// Begin one operation, wait for it with `WaitForAny`, finish it; then another may begin. While one is pending the
/// buffer, the event and the record must live; the destructor cancels a pending operation and waits until it is
/// settled. One object belongs to one thread at a time.
class ZELTO_API PipeOperation {
 public:
  /// @param pipe    the end to work on; this object is one more owner
  /// @param event   its completion event, made by `Begin...` when empty. Windows only; stays empty on Linux.
  /// @param record  not owned, like `event`
  PipeOperation(Utilities::SharedHandle pipe, Utilities::SharedHandle& event, OverlappedRecord& record) noexcept;
  ~PipeOperation();
  PipeOperation(const PipeOperation&) = delete;
  PipeOperation& operator=(const PipeOperation&) = delete;

  /// Waits for a client on a server's instance. Windows: `ConnectNamedPipe`.
  ///
  /// @return `kPipeConnected`: a client is there; also one that has gone again already (232 on Windows), whose
  ///         messages can still be read. `kIoPending`: not yet. Otherwise the error.
  ErrorCode BeginConnect() noexcept;

  /// Reads the next message, or the next chunk of it, of at most `size` bytes. Windows: `ReadFile`.
  ///
  /// @return 0 or `kMoreData`: done, `Finish` tells the count; `kIoPending`; otherwise the error
  ErrorCode BeginRead(void* buffer, std::uint32_t size) noexcept;

  /// Writes `size` bytes as one message; 0 is a message too. Windows: `WriteFile`.
  ///
  /// Writes reach the peer in the order in which they were begun. @return 0: done; `kIoPending`; otherwise the error
  ErrorCode BeginWrite(const void* data, std::uint32_t size) noexcept;

  /// The outcome of the operation begun last, without waiting. Windows: `GetOverlappedResult`.
  ///
  /// @param[out] transferred  bytes read or written
  /// @return 0; `kMoreData`: the buffer is full and the message goes on; `kIoIncomplete`: still pending; otherwise the
  ///         error that ended it
  ErrorCode Finish(std::uint32_t& transferred) noexcept;

  /// Cancels a pending operation and waits until it is settled. Windows: `CancelIoEx`.
  ///
  /// @return 0, or `kNotFound` when nothing was pending. What a cancelled write has sent, the peer may have read.
  ErrorCode Cancel() noexcept;

  /// True from a `Begin...` that returned `kIoPending` until `Finish` or `Cancel` settled it.
  bool IsPending() const noexcept { return pending_; }

  /// The platform's view, for the bodies of this room.
  struct Access;

 private:
  friend struct Access;
  enum class Kind : std::uint8_t {
    None,
    Connect,
    Read,
    Write
  };

  Utilities::SharedHandle pipe_;
  [[maybe_unused]] Utilities::SharedHandle& event_;
  [[maybe_unused]] OverlappedRecord& record_;
  void* buffer_ = nullptr;
  std::uint32_t size_ = 0;
  std::uint32_t transferred_ = 0;
  ErrorCode result_ = 0;
  Kind kind_ = Kind::None;
  bool pending_ = false;
};

/// One thing that `WaitForAny` can end by: an event or a pipe operation. It refers to both and owns neither.
class Waitable {
 public:
  Waitable(const Utilities::SharedHandle& event) noexcept : event_(&event) {}  // NOLINT: meant to convert
  Waitable(PipeOperation& operation) noexcept : operation_(&operation) {}      // NOLINT: meant to convert
  const Utilities::SharedHandle* Event() const noexcept { return event_; }     ///< null for an operation
  PipeOperation* Operation() const noexcept { return operation_; }             ///< null for an event

 private:
  const Utilities::SharedHandle* event_ = nullptr;
  PipeOperation* operation_ = nullptr;
};

/// Waits until an event is signalled or an operation can be finished.
///
/// @param things  1 to `kMaximumWaitObjects` of them; an operation that is not pending counts as finished
/// @return the lowest index that is ready, `kWaitTimeout` or `kWaitFailed`, with `GetLastErrorCode` set
///
/// Windows: `WaitForMultipleObjects`. Linux: `poll` on the sockets themselves, and operations go on
/// inside this call; a read alone waits in `recvmsg`.
ZELTO_API std::uint32_t WaitForAny(std::span<const Waitable> things, std::uint32_t timeout_ms) noexcept;

}  // namespace Zelto::Platform
