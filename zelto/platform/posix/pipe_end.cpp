#include "zelto/platform/posix/pipe_end.h"

#include "zelto/platform/posix/errno_codes.h"
#include "zelto/platform/posix/memory_message.h"
#include "zelto/platform/posix/pipe_socket.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace Zelto::Platform {
namespace {

// A larger message travels as a memory file. Below the usual send buffer, so that a few fit in the queue.
constexpr std::uint32_t kLargestPacket = 64 * 1024;
// Larger messages that the peer has not received yet may take this much together; one alone may take more.
constexpr std::uint64_t kMostMemoryOnWay = 4 << 20;
// What the overflow keeps of its memory between packets.
constexpr std::size_t kKeptOverflow = std::size_t{16} * 1024;

}  // namespace

PacketOverflow::~PacketOverflow() {
  if (data_ != nullptr) {
    ::munmap(data_, kSize);
  }
}

char* PacketOverflow::Data() noexcept {
  if (data_ == nullptr) {
    void* mapped = ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    data_ = mapped == MAP_FAILED ? nullptr : static_cast<char*>(mapped);
  }
  return data_;
}

void PacketOverflow::Fill(std::size_t size) noexcept {
  size_ = size;
  served_ = 0;
}

std::uint32_t PacketOverflow::Take(void* buffer, std::uint32_t size) noexcept {
  const std::uint32_t count = std::min(size, Left());
  std::memcpy(buffer, data_ + served_, count);
  served_ += count;
  if (served_ == size_) {
    Clear();
  }
  return count;
}

void PacketOverflow::Clear() noexcept {
  if (size_ > kKeptOverflow) {
    ::madvise(data_, kSize, MADV_DONTNEED);
  }
  Fill(0);
}

PipeEnd::PipeEnd(UniqueDescriptor client) noexcept : socket_(client.Release()) {}

PipeEnd::PipeEnd(PipeListenerShare listener) noexcept : listener_(std::move(listener)) {}

PipeEnd::PipeEnd(int borrowed) noexcept : socket_(borrowed), owned_(false) {}

PipeEnd::~PipeEnd() {
  if (owned_ && socket_ >= 0) {
    if (IsServer()) {
      Disconnect();
      DropPackets(socket_);
    }
    ::close(socket_);
  }
}

bool PipeEnd::CanAdopt(int descriptor) noexcept {
  int type = 0;
  socklen_t size = sizeof type;
  sockaddr_storage peer{};
  socklen_t peer_size = sizeof peer;
  return ::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET &&
         ::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &peer_size) == 0 && peer.ss_family == AF_UNIX &&
         WantPacketCredentials(descriptor);
}

int PipeEnd::Descriptor() const noexcept {
  const int socket = socket_;
  return socket < 0 ? listener_->Descriptor() : socket;
}

ErrorCode PipeEnd::Accept() noexcept {
  if (!IsServer()) {
    return kInvalidHandle;
  }
  if (socket_ >= 0 && !disconnected_) {
    return kPipeConnected;
  }
  UniqueDescriptor client;
  if (const ErrorCode error = listener_->Accept(client); error != kSuccess) {
    return error;
  }
  const std::scoped_lock guard(read_lock_, write_lock_);
  Forget();
  if (socket_ >= 0) {
    DropPackets(socket_);
  }
  if (socket_ < 0) {
    socket_ = client.Release();
  } else if (::dup3(client.Get(), socket_, O_CLOEXEC) < 0) {
    // The old connection's number is kept: a thread that still looks at it meets no stranger's descriptor.
    return CodeFromErrno(errno);
  }
  disconnected_ = false;
  return kPipeConnected;
}

void PipeEnd::Forget() noexcept {
  overflow_.Clear();
  memory_.Reset();
  read_failure_ = kSuccess;
  outgoing_.Reset();
  memory_on_way_ = 0;
  socket_wait_ms_ = kInfinite;
}

ErrorCode PipeEnd::Disconnect() noexcept {
  if (!IsServer()) {
    return kInvalidHandle;
  }
  if (socket_ < 0) {
    return kPipeListening;
  }
  if (disconnected_.exchange(true)) {
    return kPipeNotConnected;
  }
  ::shutdown(socket_, SHUT_RDWR);
  return kSuccess;
}

ErrorCode PipeEnd::Peer(ucred& peer) const noexcept {
  if (socket_ < 0 || disconnected_) {
    return kPipeNotConnected;
  }
  return GetPeerCredentials(socket_, peer) ? kSuccess : CodeFromErrno(errno);
}

// 0 while a connection is there, whatever its peer does.
ErrorCode PipeEnd::Usable() const noexcept {
  if (disconnected_) {
    return kPipeNotConnected;
  }
  return socket_ >= 0 ? kSuccess : kPipeListening;
}

ErrorCode PipeEnd::ReadAtHand(void* buffer, std::uint32_t size, std::uint32_t& read) noexcept {
  const std::lock_guard<std::mutex> guard(read_lock_);
  if (const ErrorCode error = Usable(); error != kSuccess) {
    return error;
  }
  if (overflow_.Left() != 0) {
    read = overflow_.Take(buffer, size);
    return overflow_.Left() == 0 ? kSuccess : kMoreData;
  }
  if (memory_) {
    return ServeMemory(buffer, size, read);
  }
  return read_failure_ != kSuccess ? read_failure_ : kIoPending;
}

ErrorCode PipeEnd::Read(void* buffer, std::uint32_t size, std::uint32_t& read, std::uint32_t wait_ms) noexcept {
  const std::lock_guard<std::mutex> guard(read_lock_);
  if (const ErrorCode error = Usable(); error != kSuccess) {
    return error;
  }
  const ErrorCode result = read_failure_ != kSuccess ? read_failure_ : Receive(buffer, size, read, wait_ms);
  if (result != kSuccess && result != kMoreData && result != kIoPending) {
    // A local disconnect looks like the peer's on the socket.
    read_failure_ = disconnected_ ? kPipeNotConnected : result;
    return read_failure_;
  }
  return result;
}

// A caller's own socket is left as it is: whether it waits, and how long, is theirs to say.
bool PipeEnd::PrepareWait(std::uint32_t wait_ms) noexcept {
  if (wait_ms == 0 || !owned_) {
    return false;
  }
  if (wait_ms != socket_wait_ms_) {
    timeval time{};
    if (wait_ms != kInfinite) {
      time.tv_sec = wait_ms / 1000;
      time.tv_usec = static_cast<suseconds_t>(wait_ms % 1000) * 1000;
    }
    if (::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time) != 0) {
      return false;
    }
    socket_wait_ms_ = wait_ms;
  }
  return true;
}

ErrorCode PipeEnd::Receive(void* buffer, std::uint32_t size, std::uint32_t& read, std::uint32_t wait_ms) noexcept {
  char* overflow = overflow_.Data();
  if (overflow == nullptr) {
    return kNotEnoughMemory;
  }
  std::array<iovec, 2> buffers{iovec{buffer, size}, iovec{overflow, PacketOverflow::kSize}};
  Packet packet;
  const ErrorCode gone = IsServer() ? kBrokenPipe : kPipeNotConnected;
  if (const ErrorCode error = ReceivePacket(socket_, buffers, PrepareWait(wait_ms), packet); error != kSuccess) {
    return error == kBrokenPipe ? gone : error;
  }
  if (packet.end) {
    return gone;
  }
  if (packet.memory) {
    if (const ErrorCode error = CheckMemoryMessage(packet.memory.Get(), memory_size_); error != kSuccess) {
      return error;
    }
    memory_ = std::move(packet.memory);
    memory_served_ = 0;
    return ServeMemory(buffer, size, read);
  }
  read = static_cast<std::uint32_t>(std::min<std::size_t>(packet.size, size));
  overflow_.Fill(packet.size - read);
  return overflow_.Left() == 0 ? kSuccess : kMoreData;
}

ErrorCode PipeEnd::ServeMemory(void* buffer, std::uint32_t size, std::uint32_t& read) noexcept {
  const std::uint32_t count = std::min(size, memory_size_ - memory_served_);
  if (const ErrorCode error = ReadMemoryMessage(memory_.Get(), memory_served_, buffer, count); error != kSuccess) {
    memory_.Reset();
    read_failure_ = error;
    return error;
  }
  read = count;
  memory_served_ += count;
  if (memory_served_ < memory_size_) {
    return kMoreData;
  }
  memory_.Reset();
  return kSuccess;
}

ErrorCode PipeEnd::BeginWrite(const void* writer, const void* data, std::uint32_t size) noexcept {
  const std::lock_guard<std::mutex> guard(write_lock_);
  if (writers_.empty()) {
    if (const ErrorCode result = Send(data, size, kNoData); result != kIoPending) {
      return result;
    }
  }
  try {
    writers_.push_back(writer);
    return kIoPending;
  } catch (const std::bad_alloc&) {
    if (writers_.empty()) {
      outgoing_.Reset();
    }
    return kNotEnoughMemory;
  }
}

ErrorCode PipeEnd::ContinueWrite(const void* writer, const void* data, std::uint32_t size) noexcept {
  const std::lock_guard<std::mutex> guard(write_lock_);
  if (writers_.empty() || writers_.front() != writer) {
    return kIoPending;
  }
  const ErrorCode result = Send(data, size, kBrokenPipe);
  if (result != kIoPending) {
    writers_.erase(writers_.begin());
  }
  return result;
}

void PipeEnd::CancelWrite(const void* writer) noexcept {
  const std::lock_guard<std::mutex> guard(write_lock_);
  const auto found = std::find(writers_.begin(), writers_.end(), writer);
  if (found == writers_.end()) {
    return;
  }
  if (found == writers_.begin()) {
    outgoing_.Reset();
  }
  writers_.erase(found);
}

bool PipeEnd::IsNextWrite(const void* writer) noexcept {
  const std::lock_guard<std::mutex> guard(write_lock_);
  return !writers_.empty() && writers_.front() == writer;
}

ErrorCode PipeEnd::Send(const void* data, std::uint32_t size, ErrorCode gone) noexcept {
  ErrorCode result = Usable();
  if (result == kSuccess) {
    const bool small = size <= kLargestPacket && !outgoing_;
    result = small ? SendPacket(socket_, data, size, -1) : kMoreData;
  }
  if (result == kMoreData) {
    result = SendMemory(data, size);
  }
  if (result != kIoPending) {
    outgoing_.Reset();
  }
  if (result == kBrokenPipe) {
    return disconnected_ || !IsServer() ? kPipeNotConnected : gone;
  }
  return result;
}

// The file is made once and kept until the message is sent or given up. A packet that carries a file takes hardly any
// room in the queue, so what a peer leaves unread is limited here.
ErrorCode PipeEnd::SendMemory(const void* data, std::uint32_t size) noexcept {
  if (!outgoing_) {
    if (const ErrorCode error = MakeMemoryMessage(data, size, outgoing_); error != kSuccess) {
      return error;
    }
  }
  if (memory_on_way_ != 0 && IsAllReceived(socket_)) {
    memory_on_way_ = 0;
  }
  if (memory_on_way_ != 0 && memory_on_way_ + size > kMostMemoryOnWay && !HasHungUp(socket_)) {
    return kIoPending;
  }
  const ErrorCode result = SendPacket(socket_, nullptr, 0, outgoing_.Get());
  if (result == kSuccess) {
    memory_on_way_ += size;
  }
  return result;
}

}  // namespace Zelto::Platform
