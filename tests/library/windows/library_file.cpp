#include "tests/library/library_file.h"

#include "zelto/text/exceptions/win32_exception.h"

#include <windows.h>

#include <stdexcept>
#include <string>
#include <vector>

using Zelto::Utilities::Version;
using Zelto::Utilities::Win32Exception;

Version VersionOfLibraryFile() {
  wchar_t path[MAX_PATH];
  if (GetModuleFileNameW(GetModuleHandleW(L"zelto.dll"), path, MAX_PATH) == 0) {
    throw Win32Exception("No library is loaded");
  }
  std::vector<char> resource(GetFileVersionInfoSizeW(path, nullptr));
  if (!GetFileVersionInfoW(path, 0, static_cast<DWORD>(resource.size()), resource.data())) {
    throw Win32Exception("No version resource");
  }
  void* value = nullptr;
  UINT size = 0;
  if (!VerQueryValueW(resource.data(), L"\\", &value, &size)) {
    throw std::runtime_error("No fixed version");
  }
  const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(value);
  const Version version(HIWORD(fixed.dwFileVersionMS), LOWORD(fixed.dwFileVersionMS), HIWORD(fixed.dwFileVersionLS),
                        LOWORD(fixed.dwFileVersionLS));
  if (!VerQueryValueW(resource.data(), L"\\StringFileInfo\\040904B0\\FileVersion", &value, &size) ||
      version != Version(std::wstring(static_cast<const wchar_t*>(value)) + L".0")) {
    throw std::runtime_error("The version's text is missing or another version's");
  }
  return version;
}
