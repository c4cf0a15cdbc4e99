#include "zelto/platform/posix/pipe_socket.h"

#include "zelto/platform/posix/errno_codes.h"

#include <fcntl.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/uio.h>

#include <cerrno>
#include <cstring>

namespace Zelto::Platform {
namespace {

// Room for the credentials and as many descriptors as a packet can carry: what has no room the system closes as it is.
constexpr std::size_t kMostDescriptors = 253;
constexpr std::size_t kControlSize = CMSG_SPACE(sizeof(ucred)) + CMSG_SPACE(kMostDescriptors * sizeof(int));

// Closing the last descriptor of a socket may take as long as its former owner wishes, unless it is told not to.
void EndLingering(int descriptor) noexcept {
  const linger none{};
  ::setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &none, sizeof none);
}

struct Control {
  bool credentials = false;
  std::size_t descriptors = 0;
  UniqueDescriptor first;
};

// Takes ownership of every descriptor that came, and keeps the first.
Control ReadControl(msghdr& header) noexcept {
  Control control;
  for (cmsghdr* record = CMSG_FIRSTHDR(&header); record != nullptr; record = CMSG_NXTHDR(&header, record)) {
    if (record->cmsg_level != SOL_SOCKET) {
      continue;
    }
    if (record->cmsg_type == SCM_CREDENTIALS) {
      control.credentials = true;
    } else if (record->cmsg_type == SCM_RIGHTS) {
      const std::size_t count = (record->cmsg_len - CMSG_LEN(0)) / sizeof(int);
      for (std::size_t i = 0; i < count; ++i) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(record) + i * sizeof descriptor, sizeof descriptor);
        EndLingering(descriptor);
        UniqueDescriptor owner(AvoidStandardStreams(descriptor));
        if (control.descriptors++ == 0) {
          control.first = std::move(owner);
        }
      }
    }
  }
  return control;
}

// An empty packet with a descriptor.
ssize_t SendDescriptor(int socket, int descriptor, int flags) noexcept {
  alignas(cmsghdr) char space[CMSG_SPACE(sizeof descriptor)] = {};
  msghdr header{};
  header.msg_control = space;
  header.msg_controllen = sizeof space;
  cmsghdr* record = CMSG_FIRSTHDR(&header);
  record->cmsg_level = SOL_SOCKET;
  record->cmsg_type = SCM_RIGHTS;
  record->cmsg_len = CMSG_LEN(sizeof descriptor);
  std::memcpy(CMSG_DATA(record), &descriptor, sizeof descriptor);
  return ::sendmsg(socket, &header, flags);
}

}  // namespace

bool PipeAddress::Set(const std::string& path) noexcept {
  if (path.size() >= sizeof address_.sun_path) {
    return false;
  }
  address_.sun_family = AF_UNIX;
  std::memcpy(address_.sun_path, path.c_str(), path.size() + 1);
  return true;
}

UniqueDescriptor MakePipeSocket() noexcept {
  UniqueDescriptor made(AvoidStandardStreams(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)));
  if (made && !WantPacketCredentials(made.Get())) {
    made.Reset();
  }
  return made;
}

bool LetBlock(int socket) noexcept {
  return ::fcntl(socket, F_SETFL, O_RDWR) == 0;
}

bool WantPacketCredentials(int socket) noexcept {
  const int on = 1;
  return ::setsockopt(socket, SOL_SOCKET, SO_PASSCRED, &on, sizeof on) == 0;
}

bool GetPeerCredentials(int socket, ucred& peer) noexcept {
  socklen_t size = sizeof peer;
  return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
}

bool IsAllReceived(int socket) noexcept {
  int queued = 0;
  return ::ioctl(socket, SIOCOUTQ, &queued) != 0 || queued == 0;
}

bool HasHungUp(int socket) noexcept {
  pollfd poll{socket, 0, 0};
  return ::poll(&poll, 1, 0) != 0;
}

ErrorCode ReceivePacket(int socket, std::span<iovec> buffers, bool wait, Packet& packet) noexcept {
  alignas(cmsghdr) char space[kControlSize];
  msghdr header{};
  header.msg_iov = buffers.data();
  header.msg_iovlen = buffers.size();
  ssize_t received = -1;
  do {
    header.msg_control = space;
    header.msg_controllen = sizeof space;
    received = ::recvmsg(socket, &header, MSG_CMSG_CLOEXEC | (wait ? 0 : MSG_DONTWAIT));
    // A reset is told once, before the packets that are still queued.
  } while (received < 0 && ((errno == EINTR && !wait) || errno == ECONNRESET));
  if (received < 0) {
    const bool nothing = errno == EAGAIN || errno == EINTR;
    return nothing ? kIoPending : (errno == ENOTCONN ? kBrokenPipe : CodeFromErrno(errno));
  }
  Control control = ReadControl(header);
  const bool cut = (header.msg_flags & MSG_CTRUNC) != 0;
  if (cut && control.descriptors == 0) {
    return kTooManyOpenFiles;  // this process has no room for the descriptor
  }
  if (cut || control.descriptors > 1 || (control.descriptors == 1 && received > 0) ||
      (header.msg_flags & MSG_TRUNC) != 0) {
    return kInvalidData;
  }
  if (control.descriptors == 1 && !control.first) {
    return kTooManyOpenFiles;  // it came as a standard stream, and there was no other number for it
  }
  packet.size = static_cast<std::size_t>(received);
  packet.end = received == 0 && !control.credentials && control.descriptors == 0;
  packet.memory = std::move(control.first);
  return kSuccess;
}

void DropPackets(int socket) noexcept {
  ErrorCode code = kSuccess;
  Packet packet;
  while (!packet.end && (code == kSuccess || code == kInvalidData || code == kTooManyOpenFiles)) {
    code = ReceivePacket(socket, {}, false, packet);
  }
}

ErrorCode SendPacket(int socket, const void* data, std::size_t size, int memory) noexcept {
  constexpr int kFlags = MSG_DONTWAIT | MSG_NOSIGNAL;
  ssize_t sent = -1;
  do {
    // The plain call is the cheaper one.
    sent = memory < 0 ? ::send(socket, data, size, kFlags) : SendDescriptor(socket, memory, kFlags);
  } while (sent < 0 && errno == EINTR);
  if (sent >= 0) {
    return kSuccess;
  }
  switch (errno) {
    case EAGAIN:
    case ETOOMANYREFS:  // too many descriptors of this user are on their way
      return kIoPending;
    case EPIPE:
    case ECONNRESET:
    case ENOTCONN:
      return kBrokenPipe;
    case EMSGSIZE:
      return kMoreData;
    default:
      return CodeFromErrno(errno);
  }
}

}  // namespace Zelto::Platform
