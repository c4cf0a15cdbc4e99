/// @file
/// What logs need of files and folders, with failures as exceptions. Not installed.
///
/// A failure is thrown as `FileSystemException` with the paths it concerns. That exception cannot be composed for a
/// path with a unit above 0xFF; the failure is a `Win32Exception` with the same message and code then.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// The folder of a path, without the separators at its end unless it is a root; empty for a bare file name.
std::wstring FolderOf(std::wstring_view path);

/// Makes a folder and those above it that are missing, unless it is there; a link to a folder is a folder. Others may
/// make them at the same time.
///
/// @throws FileSystemException, Win32Exception  "Can't create directory"
void EnsureFolder(const std::wstring& folder);

/// Whether something that is not a folder stands at the path.
///
/// @throws FileSystemException, Win32Exception  "Can't get file size": the system does not tell. A file that is there
///                                              all the same would be replaced.
bool FileExists(const std::wstring& path);

/// Size in bytes; 0 when nothing, a folder or a link stands at the path.
///
/// @throws FileSystemException, Win32Exception  "Can't get file size"
std::uint64_t FileSize(const std::wstring& path);

/// Gives a file another name, replacing a file of that name. A file that somebody else has moved or removed meanwhile
/// needs no move any more.
///
/// @throws FileSystemException, Win32Exception  "Can't move file"
void MoveFileReplacing(const std::wstring& from, const std::wstring& to);

}  // namespace Zelto::Utilities
