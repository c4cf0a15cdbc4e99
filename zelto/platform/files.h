/// @file
/// Files and folders, by wide path.
///
/// A path holds UTF-16 code units. Windows: slashes of either kind separate folders, and a path too long for the
/// classic functions is passed in its `\\?\` form. Linux: a slash separates folders, and the system gets the path in
/// UTF-8, whatever the locale. A path with a zero unit, or on Linux with a lone surrogate, gives `kInvalidName`
/// everywhere: it must not name the file that its beginning names.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/errors.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Zelto::Platform {

/// What stands at a path.
struct FileFacts {
  bool is_folder = false;
  std::uint64_t size = 0;  ///< in bytes; 0 for a folder
};

/// Looks at a path. A link is described itself and not what it points to, but a link to a folder counts as a folder.
/// Windows: `GetFileAttributesExW`. Linux: `lstat`, for a link `stat` too.
///
/// @return 0; `kFileNotFound` or `kPathNotFound` when nothing is there; otherwise the error
ZELTO_API ErrorCode QueryFile(const std::wstring& path, FileFacts& facts) noexcept;

/// Makes one folder, whose parent must be there. Windows: `CreateDirectoryW`, with the parent's access rules. Linux:
/// `mkdir`, with mode 0775 less the process's mask.
///
/// @return 0; `kAlreadyExists` when anything has that name; `kFileNotFound` or `kPathNotFound` without a parent;
///         otherwise the error
ZELTO_API ErrorCode CreateFolder(const std::wstring& path) noexcept;

/// Gives a file another name on the same volume, in one step, and replaces a file of that name. A link is moved itself.
/// Windows: `MoveFileExW` with `MOVEFILE_REPLACE_EXISTING`; `kSharingViolation` or `kAccessDenied` while somebody holds
/// either file open without sharing deletion. Linux: `rename`.
///
/// @return 0; `kFileNotFound` or `kPathNotFound`; `kAccessDenied` when a folder has the new name; otherwise the error
ZELTO_API ErrorCode RenameFile(const std::wstring& from, const std::wstring& to) noexcept;

/// Removes a file or a link, never a folder. Windows: `DeleteFileW`. Linux: `unlink`.
ZELTO_API ErrorCode RemoveFile(const std::wstring& path) noexcept;

/// Where the file's name begins in a path: behind the last separator, on Windows also behind a drive's colon.
ZELTO_API std::size_t FileNameOffset(std::wstring_view path) noexcept;

/// Whether a unit separates the folders of a path.
ZELTO_API bool IsPathSeparator(wchar_t unit) noexcept;

/// A file open for appending only. Everybody else may read, append to, rename and remove it meanwhile.
///
/// Only ordinary files are opened, hard links among them. A link, a pipe or a device at the path is refused with
/// `kCantAccessFile`, and opening never waits for one and never lets a pipe's server act in the caller's name: so
/// whoever may write in the file's folder can lead the bytes nowhere else. Links among the folders of the path are
/// followed. Windows: whoever holds an opportunistic lock on the file holds the opening up.
///
/// Used by one thread at a time.
class ZELTO_API AppendFile {
 public:
  enum class Missing {
    Fail,
    Create
  };

  AppendFile() noexcept = default;
  AppendFile(const AppendFile&) = delete;
  AppendFile& operator=(const AppendFile&) = delete;
  ~AppendFile();

  /// Opens the file; one that is open in this object is closed first. Windows: `CreateFileW` with `FILE_APPEND_DATA`.
  /// Linux: `open` with `O_APPEND`; a new file gets mode 0664 less the process's mask.
  ///
  /// @return 0; `kFileNotFound` or `kPathNotFound` when there is no file, or no folder, to open; `kCantAccessFile`, see
  ///         above; `kAccessDenied` for a folder; otherwise the error
  ErrorCode Open(const std::wstring& path, Missing missing) noexcept;

  bool IsOpen() const noexcept { return handle_ != kClosed; }

  /// Size in bytes when it was opened.
  std::uint64_t SizeAtOpen() const noexcept { return size_at_open_; }

  /// Adds bytes at the end that the file has then, in one write, so that bytes of other writers stand before or behind
  /// them. When the system took only a part, that part is cut off again, unless somebody has appended behind it.
  /// Windows: `WriteFile`, with a byte behind the end locked meanwhile where the file may be read: somebody who holds
  /// that lock delays the write by up to 250 ms. Linux: `write`; a limit of file sizes (`RLIMIT_FSIZE`) is an error and
  /// no SIGXFSZ.
  ///
  /// @param bytes  at most 0x7FFFF000 of them, the most that Linux takes in one write
  /// @return 0 when the system has taken all; `kDiskFull` when it took a part; `kInvalidParameter` when there are too
  ///         many; otherwise the error
  ErrorCode Append(std::string_view bytes) noexcept;

  /// Closes the file; nothing happens when none is open. @return 0, or the error that closing met with
  ErrorCode Close() noexcept;

 private:
  static constexpr std::intptr_t kClosed = -1;

  std::intptr_t handle_ = kClosed;  // a HANDLE or a descriptor
  std::uint64_t size_at_open_ = 0;
};

}  // namespace Zelto::Platform
