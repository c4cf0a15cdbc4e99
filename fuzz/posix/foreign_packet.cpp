#include "fuzz/foreign_packet.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>

namespace Zelto::Fuzz {
namespace {

constexpr std::size_t kMostDescriptors = 3;

// Bits 2 to 6 of the shape are the seals, as many as there are; without any the file is no memory file.
int MakeFile(std::uint8_t shape, Bytes content) {
  const int seals = shape >> 2 & (F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_FUTURE_WRITE);
  if (seals == 0) {
    return ::open("/dev/zero", O_RDWR | O_CLOEXEC);
  }
  const int file = ::memfd_create("zelto-fuzz", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  if (::write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size())) {
    ::fcntl(file, F_ADD_SEALS, seals);
  }
  return file;
}

}  // namespace

void SendForeignPacket(const Utilities::SharedHandle& pipe, std::uint8_t shape, Bytes payload) {
  const int socket = static_cast<int>(reinterpret_cast<std::intptr_t>(pipe.Get()));
  const std::size_t count = shape & kMostDescriptors;
  std::array<int, kMostDescriptors> files{};
  for (std::size_t i = 0; i < count; ++i) {
    files[i] = MakeFile(shape, payload);
  }
  const bool with_payload = (shape & 0x80U) != 0;
  iovec data{const_cast<std::uint8_t*>(payload.data()), with_payload ? payload.size() : 0};
  alignas(cmsghdr) std::array<std::byte, CMSG_SPACE(sizeof files)> control{};
  msghdr message{};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  if (count != 0) {
    message.msg_control = control.data();
    message.msg_controllen = CMSG_SPACE(count * sizeof(int));
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(count * sizeof(int));
    std::memcpy(CMSG_DATA(header), files.data(), count * sizeof(int));
  }
  ::sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
  for (std::size_t i = 0; i < count; ++i) {
    ::close(files[i]);
  }
}

}  // namespace Zelto::Fuzz
