#include "zelto/platform/modules.h"

#include <dlfcn.h>
#include <unistd.h>

#include <filesystem>

namespace Zelto::Platform {

void PinModule() noexcept {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<void*>(&PinModule), &info) != 0 && info.dli_fname != nullptr) {
    // The reference is kept on purpose. In a static build the name is the program's and nothing happens.
    ::dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
  }
}

std::string ModuleFolder() {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<void*>(&PinModule), &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  std::error_code ignored;
  // A program knows itself by the name it was started with, which may stand nowhere near it.
  std::filesystem::path file = info.dli_fname;
  if (!file.has_parent_path()) {
    file = std::filesystem::read_symlink("/proc/self/exe", ignored);
  }
  return std::filesystem::absolute(file, ignored).parent_path().string();
}

void ModuleHandleDeleter::operator()(void* module) const noexcept {
  ::dlclose(module);
}

UniqueModule LoadModule(const std::string& path, ErrorCode& error) {
  UniqueModule module(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
  error = kSuccess;
  if (!module) {
    error = ::access(path.c_str(), F_OK) != 0 ? kModuleNotFound : kBadExeFormat;
  }
  return module;
}

void* FindFunction(void* module, const char* name) noexcept {
  return ::dlsym(module, name);
}

}  // namespace Zelto::Platform
