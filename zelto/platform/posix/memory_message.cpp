#include "zelto/platform/posix/memory_message.h"

#include "zelto/platform/posix/errno_codes.h"
#include "zelto/platform/posix/file_write.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Zelto::Platform {
namespace {

constexpr int kSeals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
constexpr char kFileName[] = "zelto-message";
constexpr unsigned kNotExecutable = 8;  // MFD_NOEXEC_SEAL, Linux 6.3; a system may insist on it

}  // namespace

ErrorCode MakeMemoryMessage(const void* data, std::uint32_t size, UniqueDescriptor& file) noexcept {
  int made = ::memfd_create(kFileName, MFD_CLOEXEC | MFD_ALLOW_SEALING | kNotExecutable);
  if (made < 0 && errno == EINVAL) {
    made = ::memfd_create(kFileName, MFD_CLOEXEC | MFD_ALLOW_SEALING);
  }
  UniqueDescriptor memory(AvoidStandardStreams(made));
  if (!memory) {
    return CodeFromErrno(errno);
  }
  const auto* bytes = static_cast<const char*>(data);
  for (std::uint32_t done = 0; done < size;) {
    const ssize_t written = WriteToFile(memory.Get(), bytes + done, size - done);
    if (written <= 0) {
      return CodeFromErrno(errno);
    }
    done += static_cast<std::uint32_t>(written);
  }
  if (::fcntl(memory.Get(), F_ADD_SEALS, kSeals) != 0) {
    return CodeFromErrno(errno);
  }
  file = std::move(memory);
  return kSuccess;
}

ErrorCode CheckMemoryMessage(int file, std::uint32_t& size) noexcept {
  const int seals = ::fcntl(file, F_GET_SEALS);
  struct stat status {};
  if (seals < 0 || (seals & kSeals) != kSeals || ::fstat(file, &status) != 0 || status.st_size <= 0 ||
      status.st_size > 0xFFFFFFFF) {
    return kInvalidData;
  }
  size = static_cast<std::uint32_t>(status.st_size);
  return kSuccess;
}

ErrorCode ReadMemoryMessage(int file, std::uint32_t offset, void* buffer, std::uint32_t size) noexcept {
  for (std::uint32_t done = 0; done < size;) {
    const ssize_t read = ::pread(file, static_cast<char*>(buffer) + done, size - done, off_t{offset} + done);
    if (read > 0) {
      done += static_cast<std::uint32_t>(read);
    } else if (read == 0) {
      return kInvalidData;
    } else if (errno != EINTR) {
      return CodeFromErrno(errno);
    }
  }
  return kSuccess;
}

}  // namespace Zelto::Platform
