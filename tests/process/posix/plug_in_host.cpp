// Loads a module that uses the library, calls it, unloads it and ends: plug_in_host <pipe name>.
#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <string>

int main(int count, char** arguments) {
  const std::string path = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "plug_in.module";
  void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr || count != 2) {
    std::fprintf(stderr, "%s\n", ::dlerror());
    return 2;
  }
  const auto use = reinterpret_cast<int (*)(const char*)>(::dlsym(module, "UsePlugIn"));
  const int result = use != nullptr ? use(arguments[1]) : 3;
  return ::dlclose(module) == 0 ? result : 4;
}
