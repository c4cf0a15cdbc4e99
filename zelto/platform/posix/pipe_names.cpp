#include "zelto/platform/posix/pipe_names.h"

#include "zelto/platform/posix/descriptor.h"
#include "zelto/platform/posix/errno_codes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace Zelto::Platform {
namespace {

constexpr std::wstring_view kPrefix = L"\\\\.\\pipe\\";
constexpr std::size_t kLongestName = 256;     // in units, the prefix included, as on Windows
constexpr std::size_t kLongestFileName = 64;  // leaves room for the directory in a socket address of 107 bytes
constexpr std::size_t kKeptOfLongName = 30;
constexpr char kSystemParent[] = "/run";
constexpr char kSystemDirectory[] = "/run/zelto";
constexpr mode_t kWritableByOthers = S_IWGRP | S_IWOTH;

void AppendHex(std::string& text, std::uint64_t value, int digits) {
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    text += "0123456789abcdef"[(value >> shift) & 15];
  }
}

void AppendUnit(std::string& text, std::uint32_t unit) {
  const std::uint32_t lower = unit >= 'A' && unit <= 'Z' ? unit + ('a' - 'A') : unit;
  const bool plain =
      (lower >= 'a' && lower <= 'z') || (lower >= '0' && lower <= '9') || lower == '.' || lower == '_' || lower == '-';
  if (plain) {
    text += static_cast<char>(lower);
  } else if (lower < 0x80) {
    text += '%';
    AppendHex(text, lower, 2);
  } else {
    text += "%u";
    AppendHex(text, lower & 0xFFFF, 4);
  }
}

// FNV-1a, 64 bits.
std::uint64_t Hash(std::string_view text, std::uint64_t hash) noexcept {
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  }
  return hash;
}

bool IsSafe(const char* path, uid_t owner) noexcept {
  struct stat status {};
  return ::lstat(path, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == owner &&
         (status.st_mode & kWritableByOthers) == 0;
}

}  // namespace

std::string PipeFileName(const std::wstring& name) {
  if (name.size() <= kPrefix.size() || name.size() > kLongestName || name.compare(0, kPrefix.size(), kPrefix) != 0 ||
      name.find(L'\0') != std::wstring::npos) {
    return {};
  }
  std::string file;
  for (std::size_t i = kPrefix.size(); i < name.size(); ++i) {
    const auto unit = static_cast<std::uint32_t>(name[i]);  // NOLINT(bugprone-signed-char-misuse): no char
    if (unit > 0xFFFF) {
      AppendUnit(file, 0xD7C0 + (unit >> 10));
      AppendUnit(file, 0xDC00 + (unit & 0x3FF));
    } else {
      AppendUnit(file, unit);
    }
  }
  if (file.size() > kLongestFileName) {
    const std::uint64_t first = Hash(file, 0xCBF29CE484222325);
    const std::uint64_t second = Hash(file, first);
    file.resize(kKeptOfLongName);
    file += "%h";
    AppendHex(file, first, 16);
    AppendHex(file, second, 16);
  }
  return file;
}

std::vector<PipeDirectory> PipeDirectories() {
  std::vector<PipeDirectory> directories;
  if (IsSafe(kSystemParent, 0)) {
    directories.push_back({kSystemDirectory, true});
  }
  const char* runtime = ::secure_getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && runtime[0] == '/' && IsSafe(runtime, ::geteuid())) {
    directories.push_back({std::string(runtime) + "/zelto", false});
  }
  directories.push_back({"/tmp/zelto-" + std::to_string(::geteuid()), false});
  return directories;
}

ErrorCode CheckPipeDirectory(const PipeDirectory& directory, bool make, uid_t& owner) noexcept {
  const mode_t mode = directory.system ? 0755 : 0700;
  const bool made = make && ::mkdir(directory.path.c_str(), mode) == 0;
  const UniqueDescriptor opened(::open(directory.path.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!opened) {
    // A file or a link that a stranger put there is no directory.
    const bool absent = errno == ENOENT;
    return absent && !make ? kFileNotFound
                           : (errno == ELOOP || errno == ENOTDIR || absent ? kAccessDenied : CodeFromErrno(errno));
  }
  struct stat status {};
  if (::fstat(opened.Get(), &status) != 0) {
    return CodeFromErrno(errno);
  }
  if ((status.st_mode & kWritableByOthers) != 0 || (!directory.system && status.st_uid != ::geteuid())) {
    return kAccessDenied;
  }
  // What the process's file mask took from the machine's directory, clients of other users need.
  if (made && directory.system && (status.st_mode & 0777) != mode && ::chmod(directory.path.c_str(), mode) != 0) {
    return CodeFromErrno(errno);
  }
  owner = status.st_uid;
  return kSuccess;
}

}  // namespace Zelto::Platform
