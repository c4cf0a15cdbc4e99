/// @file
/// The sockets under message pipes: making, addressing, packets with their control records. Not installed.
#pragma once

#include "zelto/platform/errors.h"
#include "zelto/platform/posix/descriptor.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <span>
#include <string>

namespace Zelto::Platform {

/// A path as a socket address.
class PipeAddress {
 public:
  /// @return false when the path is too long
  bool Set(const std::string& path) noexcept;
  const sockaddr* Get() const noexcept { return reinterpret_cast<const sockaddr*>(&address_); }
  socklen_t Size() const noexcept { return sizeof address_; }

 private:
  sockaddr_un address_{};
};

/// A new packet socket: not blocking, close-on-exec, with credentials on each packet. Empty with `errno` on failure.
UniqueDescriptor MakePipeSocket() noexcept;

/// Lets a connected socket block. Only a read that may wait does; everything else says on each call that it must not.
bool LetBlock(int socket) noexcept;

/// Asks for the sender's credentials on each packet: an empty packet carries them, the end of the stream does not.
bool WantPacketCredentials(int socket) noexcept;

bool GetPeerCredentials(int socket, ucred& peer) noexcept;

/// Whether the peer has received all that was sent, or has closed.
bool IsAllReceived(int socket) noexcept;
/// Whether either side has ended the connection.
bool HasHungUp(int socket) noexcept;

/// One received packet.
struct Packet {
  std::size_t size = 0;     ///< bytes in the buffers
  UniqueDescriptor memory;  ///< the one descriptor that came with an empty packet
  bool end = false;         ///< no packet: the peer sends no more
};

/// Receives one packet. Descriptors that a packet must not carry are closed.
///
/// @param wait  waits for one, as long as the socket's own time-out says or until a signal comes
/// @return 0; `kIoPending` when there is none; `kBrokenPipe` for a socket without a connection; `kInvalidData` for a
///         packet larger than the buffers, with a payload and descriptors, or with several; otherwise the error
ErrorCode ReceivePacket(int socket, std::span<iovec> buffers, bool wait, Packet& packet) noexcept;

/// Receives what is left of a connection that is shut down, and drops it. Before a socket is closed, since the system
/// would close descriptors among it with all the time that their former owner gave them.
void DropPackets(int socket) noexcept;

/// Sends one packet without waiting, with one descriptor when `memory` is not -1.
///
/// @return 0; `kIoPending` when the queue is full; `kBrokenPipe` when the peer is gone; `kMoreData` when it is too
///         large for a packet; otherwise the error
ErrorCode SendPacket(int socket, const void* data, std::size_t size, int memory) noexcept;

}  // namespace Zelto::Platform
