/// @file
/// Names of a log file's backups. Not installed.
#pragma once

#include <string>

namespace Zelto::Utilities {

/// The path of a backup: "_" and the number before the extension, which begins at the last dot of the file's name; at
/// the end when the name has no dot. Dots in the names of folders do not count.
///
/// @param number  1 for the most recent backup
///
/// Example: `BackupName(L"/var/log.d/agent.log", 2)` is L"/var/log.d/agent_2.log".
std::wstring BackupName(const std::wstring& path, int number);

}  // namespace Zelto::Utilities
