/// @file
/// Where a pipe's name lies in the file system. Not installed.
#pragma once

#include "zelto/platform/errors.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace Zelto::Platform {

/// The file name, without suffix, that stands for a pipe's full name. Names compare without regard to ASCII case.
///
/// Characters outside a-z, 0-9, dot, underscore and hyphen become `%` and two or `%u` and four hexadecimal digits per
/// UTF-16 unit; a long result is cut and gets a hash.
/// @return empty when the name lacks the prefix `\\.\pipe\`, is nothing but it, holds U+0000 or has more than 256 units
std::string PipeFileName(const std::wstring& name);

/// A directory that can hold pipes.
struct PipeDirectory {
  std::string path;
  bool system = false;  ///< the machine's own; otherwise one of the calling user's
};

/// The directories in the order in which servers and clients look at them: `/run/zelto`; `zelto` in the user's runtime
/// directory (`XDG_RUNTIME_DIR`, when it is the user's); `/tmp/zelto-<user id>`.
std::vector<PipeDirectory> PipeDirectories();

/// Judges a directory: no other user but its owner may write in it, and the owner of a user's own directory is the
/// user; links are not followed.
///
/// @param make        makes the directory when it is not there
/// @param[out] owner  the directory's owner
/// @return 0; `kFileNotFound`; `kAccessDenied` when it is not safe or may not be made; otherwise the error
ErrorCode CheckPipeDirectory(const PipeDirectory& directory, bool make, uid_t& owner) noexcept;

}  // namespace Zelto::Platform
