#include "zelto/files/backup_name.h"

#include "zelto/platform/files.h"

#include <cstddef>

namespace Zelto::Utilities {

std::wstring BackupName(const std::wstring& path, int number) {
  const std::size_t dot = path.rfind(L'.');
  const bool in_name = dot != std::wstring::npos && dot >= Platform::FileNameOffset(path);
  std::wstring name = path;
  return name.insert(in_name ? dot : path.size(), L"_" + std::to_wstring(number));
}

}  // namespace Zelto::Utilities
