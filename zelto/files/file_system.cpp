#include "zelto/files/file_system.h"

#include "zelto/platform/files.h"
#include "zelto/text/exceptions/file_system_exception.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <stdexcept>
#include <vector>

namespace Zelto::Utilities {
namespace {

bool IsMissing(Platform::ErrorCode code) noexcept {
  return code == Platform::kFileNotFound || code == Platform::kPathNotFound;
}

bool IsFolder(const std::wstring& path) noexcept {
  Platform::FileFacts facts;
  return Platform::QueryFile(path, facts) == Platform::kSuccess && facts.is_folder;
}

[[noreturn]] void ThrowFailure(std::string_view message, const std::wstring& path1, const std::wstring& path2,
                               Platform::ErrorCode code) {
  try {
    throw FileSystemException(message, path1, path2, code);
  } catch (const std::range_error&) {
    throw Win32Exception(message, code);
  }
}

// Whether something stands at the path, and what.
bool Find(const std::wstring& path, Platform::FileFacts& facts) {
  const Platform::ErrorCode code = Platform::QueryFile(path, facts);
  if (code != Platform::kSuccess && !IsMissing(code)) {
    ThrowFailure("Can't get file size", path, {}, code);
  }
  return code == Platform::kSuccess;
}

// The result of making a folder that is wanted and may have been made by others meanwhile.
Platform::ErrorCode MakeFolder(const std::wstring& folder) noexcept {
  const Platform::ErrorCode code = Platform::CreateFolder(folder);
  return code != Platform::kSuccess && IsFolder(folder) ? Platform::kSuccess : code;
}

}  // namespace

std::wstring FolderOf(std::wstring_view path) {
  std::wstring_view folder = path.substr(0, Platform::FileNameOffset(path));
  std::size_t length = folder.size();
  while (length > 0 && Platform::IsPathSeparator(folder[length - 1])) {
    --length;
  }
  // On Windows "C:" is the folder in which the process is on that drive, and "\\?\C:" is no folder.
  if (length > 0 && length < folder.size() && folder[length - 1] == L':') {
    ++length;
  }
  return std::wstring(length > 0 ? folder.substr(0, length) : folder);
}

void EnsureFolder(const std::wstring& folder) {
  if (folder.empty() || IsFolder(folder)) {
    return;
  }
  // Upwards to the first that can be made, then downwards again; a loop, since a path may have thousands of parts.
  std::vector<std::wstring> missing{folder};
  Platform::ErrorCode code = MakeFolder(folder);
  while (IsMissing(code)) {
    std::wstring parent = FolderOf(missing.back());
    if (parent.empty() || parent == missing.back()) {
      break;
    }
    missing.push_back(std::move(parent));
    code = MakeFolder(missing.back());
  }
  while (code == Platform::kSuccess && missing.size() > 1) {
    missing.pop_back();
    code = MakeFolder(missing.back());
  }
  if (code != Platform::kSuccess) {
    ThrowFailure("Can't create directory", missing.back(), {}, code);
  }
}

bool FileExists(const std::wstring& path) {
  Platform::FileFacts facts;
  return Find(path, facts) && !facts.is_folder;
}

std::uint64_t FileSize(const std::wstring& path) {
  Platform::FileFacts facts;
  return Find(path, facts) ? facts.size : 0;
}

void MoveFileReplacing(const std::wstring& from, const std::wstring& to) {
  const Platform::ErrorCode code = Platform::RenameFile(from, to);
  if (code != Platform::kSuccess && !(IsMissing(code) && !FileExists(from))) {
    ThrowFailure("Can't move file", from, to, code);
  }
}

}  // namespace Zelto::Utilities
