#include "zelto/platform/files.h"

#include <windows.h>

#include <exception>

namespace Zelto::Platform {
namespace {

constexpr std::size_t kLongestClassicPath = MAX_PATH - 12 - 1;  // a folder leaves room for a short file name
constexpr std::size_t kLargestWrite = 0x7FFFF000;               // what the Linux body can write at once
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

bool IsNamedAsIs(const std::wstring& path) noexcept {
  return path.compare(0, 4, L"\\\\?\\") == 0 || path.compare(0, 4, L"\\\\.\\") == 0;
}

// A path as the system's functions take it, whatever its length.
class SystemPath {
 public:
  explicit SystemPath(const std::wstring& path) noexcept : path_(&path) {
    if (path.find(L'\0') != std::wstring::npos) {
      error_ = kInvalidName;
    } else if (path.size() > kLongestClassicPath && !IsNamedAsIs(path)) {
      Lengthen();
    }
  }

  ErrorCode Error() const noexcept { return error_; }
  const wchar_t* Get() const noexcept { return path_->c_str(); }

 private:
  void Lengthen() noexcept {
    try {
      std::wstring full(::GetFullPathNameW(path_->c_str(), 0, nullptr, nullptr), L'\0');
      full.resize(::GetFullPathNameW(path_->c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
      if (full.empty()) {
        error_ = ::GetLastError();
        return;
      }
      const bool on_share = full.compare(0, 2, L"\\\\") == 0;
      long_form_ = on_share ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
      path_ = &long_form_;
    } catch (const std::exception&) {
      error_ = kNotEnoughMemory;
    }
  }

  const std::wstring* path_;
  std::wstring long_form_;
  ErrorCode error_ = kSuccess;
};

ErrorCode CodeOf(BOOL result) noexcept {
  return result ? kSuccess : ::GetLastError();
}

HANDLE AsHandle(std::intptr_t handle) noexcept {
  return reinterpret_cast<HANDLE>(handle);
}

HANDLE OpenWithAccess(const SystemPath& path, DWORD access, DWORD disposition, DWORD flags) noexcept {
  // A named pipe's server may learn who the caller is and no more.
  return ::CreateFileW(path.Get(), access, kShareAll, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION | flags, nullptr);
}

// Without FILE_WRITE_DATA every write goes to the end that the file has then. FILE_READ_DATA is for the lock only, and
// is done without where it is not granted.
HANDLE OpenForAppending(const SystemPath& path, DWORD disposition, DWORD flags) noexcept {
  const DWORD access = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
  const HANDLE file = OpenWithAccess(path, access | FILE_READ_DATA, disposition, flags);
  const bool denied = file == INVALID_HANDLE_VALUE && ::GetLastError() == ERROR_ACCESS_DENIED;
  return denied ? OpenWithAccess(path, access, disposition, flags) : file;
}

// Keeps other appenders of this library away for the time of one write. A local volume of Windows finds the end and
// writes there in one step; network file systems and Wine do not. The locked byte lies far behind any file's end, where
// it is in nobody's way. The wait is bounded, since everybody who may read the file may lock it, too.
class AppendLock {
 public:
  explicit AppendLock(HANDLE file) noexcept : file_(file) {
    const ULONGLONG start = ::GetTickCount64();
    for (int attempt = 0; !TryLock() && ::GetLastError() == ERROR_LOCK_VIOLATION; ++attempt) {
      if (::GetTickCount64() - start > kLongestWaitMs) {
        return;
      }
      ::Sleep(attempt < kAttemptsWithoutSleep ? 0 : 1);
    }
  }
  AppendLock(const AppendLock&) = delete;
  AppendLock& operator=(const AppendLock&) = delete;
  ~AppendLock() {
    if (locked_) {
      OVERLAPPED position = Position();
      ::UnlockFileEx(file_, 0, 1, 0, &position);
    }
  }

 private:
  static constexpr ULONGLONG kLongestWaitMs = 250;
  static constexpr int kAttemptsWithoutSleep = 50;

  static OVERLAPPED Position() noexcept {
    OVERLAPPED position{};
    position.Offset = 0xFFFFFFFE;
    position.OffsetHigh = 0x7FFFFFFF;
    return position;
  }

  bool TryLock() noexcept {
    OVERLAPPED position = Position();
    locked_ = ::LockFileEx(file_, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &position) != 0;
    return locked_;
  }

  HANDLE file_;
  bool locked_ = false;
};

// A link of any kind; other reparse points (deduplicated or offline files) are ordinary files to everybody.
bool IsLink(HANDLE file) noexcept {
  FILE_ATTRIBUTE_TAG_INFO info{};
  return !::GetFileInformationByHandleEx(file, FileAttributeTagInfo, &info, sizeof(info)) ||
         IsReparseTagNameSurrogate(info.ReparseTag);
}

bool IsSameFile(HANDLE file, const BY_HANDLE_FILE_INFORMATION& other) noexcept {
  BY_HANDLE_FILE_INFORMATION info{};
  return ::GetFileInformationByHandle(file, &info) && info.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
         info.nFileIndexHigh == other.nFileIndexHigh && info.nFileIndexLow == other.nFileIndexLow;
}

// What is torn stays torn when somebody has appended behind it: cutting there would cost their bytes. The end can only
// be set by a handle that may write anywhere.
void CutBack(HANDLE file, DWORD count) noexcept {
  LARGE_INTEGER end{};
  LARGE_INTEGER size{};
  if (count == 0 || !::SetFilePointerEx(file, LARGE_INTEGER{}, &end, FILE_CURRENT) || end.QuadPart < count) {
    return;
  }
  const HANDLE writable = ::ReOpenFile(file, GENERIC_WRITE, kShareAll, 0);
  if (writable == INVALID_HANDLE_VALUE) {
    return;
  }
  LARGE_INTEGER start{};
  start.QuadPart = end.QuadPart - count;
  if (::GetFileSizeEx(writable, &size) && size.QuadPart == end.QuadPart &&
      ::SetFilePointerEx(writable, start, nullptr, FILE_BEGIN)) {
    ::SetEndOfFile(writable);
  }
  ::CloseHandle(writable);
}

}  // namespace

ErrorCode QueryFile(const std::wstring& path, FileFacts& facts) noexcept {
  const SystemPath name(path);
  if (name.Error() != kSuccess) {
    return name.Error();
  }
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!::GetFileAttributesExW(name.Get(), GetFileExInfoStandard, &data)) {
    return ::GetLastError();
  }
  facts.is_folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  facts.size = facts.is_folder ? 0 : (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
  return kSuccess;
}

ErrorCode CreateFolder(const std::wstring& path) noexcept {
  const SystemPath name(path);
  return name.Error() != kSuccess ? name.Error() : CodeOf(::CreateDirectoryW(name.Get(), nullptr));
}

ErrorCode RenameFile(const std::wstring& from, const std::wstring& to) noexcept {
  const SystemPath old_name(from);
  const SystemPath new_name(to);
  if (old_name.Error() != kSuccess || new_name.Error() != kSuccess) {
    return old_name.Error() != kSuccess ? old_name.Error() : new_name.Error();
  }
  return CodeOf(::MoveFileExW(old_name.Get(), new_name.Get(), MOVEFILE_REPLACE_EXISTING));
}

ErrorCode RemoveFile(const std::wstring& path) noexcept {
  const SystemPath name(path);
  return name.Error() != kSuccess ? name.Error() : CodeOf(::DeleteFileW(name.Get()));
}

std::size_t FileNameOffset(std::wstring_view path) noexcept {
  const std::size_t offset = path.find_last_of(L"\\/") + 1;  // none found wraps to 0
  const bool behind_drive = offset == 0 && path.size() >= 2 && path[1] == L':';
  return behind_drive ? 2 : offset;
}

bool IsPathSeparator(wchar_t unit) noexcept {
  return unit == L'\\' || unit == L'/';
}

AppendFile::~AppendFile() {
  Close();
}

ErrorCode AppendFile::Open(const std::wstring& path, Missing missing) noexcept {
  Close();
  const SystemPath name(path);
  if (name.Error() != kSuccess) {
    return name.Error();
  }
  const DWORD disposition = missing == Missing::Create ? OPEN_ALWAYS : OPEN_EXISTING;
  const HANDLE file = OpenForAppending(name, disposition, FILE_FLAG_OPEN_REPARSE_POINT);
  if (file == INVALID_HANDLE_VALUE) {
    return ::GetLastError();
  }
  handle_ = reinterpret_cast<std::intptr_t>(file);
  BY_HANDLE_FILE_INFORMATION info{};
  if (::GetFileType(file) != FILE_TYPE_DISK || !::GetFileInformationByHandle(file, &info)) {
    Close();
    return kCantAccessFile;
  }
  if ((info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    if (IsLink(file)) {
      Close();
      return kCantAccessFile;
    }
    // What it stands for is opened by name, where somebody may have put another file meanwhile.
    const HANDLE target = OpenForAppending(name, OPEN_EXISTING, 0);
    const ErrorCode code = target == INVALID_HANDLE_VALUE ? ::GetLastError() : kSuccess;
    Close();
    if (code != kSuccess) {
      return code;
    }
    handle_ = reinterpret_cast<std::intptr_t>(target);
    if (!IsSameFile(target, info)) {
      Close();
      return kCantAccessFile;
    }
  }
  size_at_open_ = (static_cast<std::uint64_t>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
  return kSuccess;
}

ErrorCode AppendFile::Append(std::string_view bytes) noexcept {
  if (bytes.size() > kLargestWrite) {
    return kInvalidParameter;
  }
  const HANDLE file = AsHandle(handle_);
  const AppendLock lock(file);
  DWORD written = 0;
  const BOOL taken = ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  const ErrorCode code = taken ? kDiskFull : ::GetLastError();
  if (taken && written == bytes.size()) {
    return kSuccess;
  }
  CutBack(file, written);
  return code;
}

ErrorCode AppendFile::Close() noexcept {
  if (handle_ == kClosed) {
    return kSuccess;
  }
  const HANDLE file = AsHandle(handle_);
  handle_ = kClosed;
  return CodeOf(::CloseHandle(file));
}

}  // namespace Zelto::Platform
