// Loads a module that uses the library, calls it, unloads it and ends: plug_in_host <pipe name>.
#include <windows.h>

#include <cstdio>

int main(int count, char** arguments) {
  const HMODULE module = ::LoadLibraryA("plug_in.module");
  if (module == nullptr || count != 2) {
    std::fprintf(stderr, "LoadLibrary: error %lu\n", ::GetLastError());
    return 2;
  }
  const auto use =
      reinterpret_cast<int (*)(const char*)>(reinterpret_cast<void*>(::GetProcAddress(module, "UsePlugIn")));
  const int result = use != nullptr ? use(arguments[1]) : 3;
  return ::FreeLibrary(module) ? result : 4;
}
