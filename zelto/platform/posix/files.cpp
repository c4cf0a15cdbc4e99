#include "zelto/platform/files.h"

#include "zelto/platform/posix/errno_codes.h"
#include "zelto/platform/posix/file_write.h"
#include "zelto/platform/posix/system_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Zelto::Platform {
namespace {

// Whatever the process's mask: nobody outside the owner and the group may change what the library makes.
constexpr mode_t kFileMode = 0664;
constexpr mode_t kFolderMode = 0775;

constexpr std::size_t kLargestWrite = 0x7FFFF000;

ErrorCode CodeOf(int result) noexcept {
  return result == 0 ? kSuccess : CodeFromErrno(errno);
}

// What is torn stays torn when somebody has appended behind it: cutting there would cost their bytes.
void CutBack(int descriptor, off_t count) noexcept {
  const off_t end = ::lseek(descriptor, 0, SEEK_CUR);
  struct stat status {};
  if (end >= count && ::fstat(descriptor, &status) == 0 && status.st_size == end) {
    [[maybe_unused]] const int result = ::ftruncate(descriptor, end - count);
  }
}

// Whether a descriptor is an ordinary file's, and its size. The times of the file are left out on purpose: some file
// systems note that they were asked for, and the next write to the file then costs twice as much.
bool IsOrdinaryFile(int descriptor, std::uint64_t& size) noexcept {
  struct statx facts {};
  if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_TYPE | STATX_SIZE, &facts) == 0) {
    size = facts.stx_size;
    return S_ISREG(facts.stx_mode);
  }
  struct stat status {};  // where a filter does not let the newer call through
  if (::fstat(descriptor, &status) != 0) {
    return false;
  }
  size = static_cast<std::uint64_t>(status.st_size);
  return S_ISREG(status.st_mode);
}

}  // namespace

ErrorCode QueryFile(const std::wstring& path, FileFacts& facts) noexcept {
  std::string name;
  if (const ErrorCode code = ToSystemPath(path, name); code != kSuccess) {
    return code;
  }
  struct stat status {};
  if (::lstat(name.c_str(), &status) != 0) {
    return CodeFromErrno(errno);
  }
  struct stat target {};
  facts.is_folder = S_ISDIR(status.st_mode) ||
                    (S_ISLNK(status.st_mode) && ::stat(name.c_str(), &target) == 0 && S_ISDIR(target.st_mode));
  facts.size = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
  return kSuccess;
}

ErrorCode CreateFolder(const std::wstring& path) noexcept {
  std::string name;
  const ErrorCode code = ToSystemPath(path, name);
  return code != kSuccess ? code : CodeOf(::mkdir(name.c_str(), kFolderMode));
}

ErrorCode RenameFile(const std::wstring& from, const std::wstring& to) noexcept {
  std::string old_name;
  std::string new_name;
  if (const ErrorCode code = ToSystemPath(from, old_name); code != kSuccess) {
    return code;
  }
  const ErrorCode code = ToSystemPath(to, new_name);
  return code != kSuccess ? code : CodeOf(::rename(old_name.c_str(), new_name.c_str()));
}

ErrorCode RemoveFile(const std::wstring& path) noexcept {
  std::string name;
  const ErrorCode code = ToSystemPath(path, name);
  return code != kSuccess ? code : CodeOf(::unlink(name.c_str()));
}

std::size_t FileNameOffset(std::wstring_view path) noexcept {
  return path.rfind(L'/') + 1;  // none found wraps to 0
}

bool IsPathSeparator(wchar_t unit) noexcept {
  return unit == L'/';
}

AppendFile::~AppendFile() {
  Close();
}

ErrorCode AppendFile::Open(const std::wstring& path, Missing missing) noexcept {
  Close();
  std::string name;
  if (const ErrorCode code = ToSystemPath(path, name); code != kSuccess) {
    return code;
  }
  // O_NONBLOCK is for a pipe, which would otherwise wait for its reader; an ordinary file does not know it.
  const int flags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  const int descriptor = ::open(name.c_str(), missing == Missing::Create ? flags | O_CREAT : flags, kFileMode);
  if (descriptor < 0) {
    const bool link_or_pipe = errno == ELOOP || errno == ENXIO;
    return link_or_pipe ? kCantAccessFile : CodeFromErrno(errno);
  }
  handle_ = descriptor;
  if (!IsOrdinaryFile(descriptor, size_at_open_)) {
    Close();
    return kCantAccessFile;
  }
  return kSuccess;
}

ErrorCode AppendFile::Append(std::string_view bytes) noexcept {
  if (bytes.size() > kLargestWrite) {
    return kInvalidParameter;
  }
  const int descriptor = static_cast<int>(handle_);
  const ssize_t written = WriteToFile(descriptor, bytes.data(), bytes.size());
  if (written < 0) {
    return CodeFromErrno(errno);
  }
  if (static_cast<std::size_t>(written) == bytes.size()) {
    return kSuccess;
  }
  CutBack(descriptor, written);
  return kDiskFull;
}

ErrorCode AppendFile::Close() noexcept {
  if (handle_ == kClosed) {
    return kSuccess;
  }
  const int descriptor = static_cast<int>(handle_);
  handle_ = kClosed;
  // Linux has closed the descriptor even when a signal interrupts the call: it must not be closed again.
  return ::close(descriptor) == 0 || errno == EINTR ? kSuccess : CodeFromErrno(errno);
}

}  // namespace Zelto::Platform
