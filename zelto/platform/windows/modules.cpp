#include "zelto/platform/modules.h"

#include <windows.h>

namespace Zelto::Platform {

void PinModule() noexcept {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(&PinModule), &module);
}

std::string ModuleFolder() {
  HMODULE module = nullptr;
  if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<LPCWSTR>(&PinModule), &module)) {
    return {};
  }
  std::string file(MAX_PATH, '\0');
  DWORD length = 0;
  while ((length = ::GetModuleFileNameA(module, file.data(), static_cast<DWORD>(file.size()))) == file.size()) {
    file.resize(file.size() * 2);
  }
  file.resize(length);
  const std::size_t separator = file.find_last_of("\\/");
  return separator == std::string::npos ? std::string() : file.substr(0, separator);
}

void ModuleHandleDeleter::operator()(void* module) const noexcept {
  ::FreeLibrary(static_cast<HMODULE>(module));
}

UniqueModule LoadModule(const std::string& path, ErrorCode& error) {
  // A relative path would be looked for in the program's and the system's folders, too.
  std::string full(::GetFullPathNameA(path.c_str(), 0, nullptr, nullptr), '\0');
  full.resize(::GetFullPathNameA(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  // A service has nobody to click a message about a broken file away.
  DWORD old_mode = 0;
  const bool mode_set = ::SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &old_mode) != 0;
  UniqueModule module(::LoadLibraryExA(full.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  error = module ? kSuccess : ::GetLastError();
  if (mode_set) {
    ::SetThreadErrorMode(old_mode, nullptr);
  }
  return module;
}

void* FindFunction(void* module, const char* name) noexcept {
  return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(module), name));
}

}  // namespace Zelto::Platform
