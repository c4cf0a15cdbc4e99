/// @file
/// Loaded modules: this library itself, and others that are loaded at run time.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/errors.h>

#include <memory>
#include <string>

namespace Zelto::Platform {

/// Keeps this module loaded until the process ends. Called before the first thread of the library starts, so that an
/// unloading host cannot take the code away from under it. Later calls do nothing.
///
/// Windows: `GetModuleHandleExW` with `GET_MODULE_HANDLE_EX_FLAG_PIN`. Linux: `dlopen` with `RTLD_NODELETE`.
ZELTO_API void PinModule() noexcept;

/// The folder of the file that holds this code: the library's, in a static build the program's. With no separator at
/// its end, narrow as `LoadModule` takes paths; empty when the system does not tell.
///
/// Windows: `GetModuleFileNameA`. Linux: `dladdr`.
ZELTO_API std::string ModuleFolder();

/// Lets a loaded module go. Windows: `FreeLibrary`. Linux: `dlclose`.
struct ModuleHandleDeleter {
  ZELTO_API void operator()(void* module) const noexcept;
};

/// A loaded module and its only owner.
using UniqueModule = std::unique_ptr<void, ModuleHandleDeleter>;

/// Loads a module by its path. Nothing of it becomes visible to modules that are loaded later.
///
/// Windows: `LoadLibraryExA`, so the path must be representable in the system's code page; the modules that it needs
/// are looked for beside it first. No message box is shown. Linux: `dlopen` with `RTLD_NOW` and `RTLD_LOCAL`.
///
/// @param path   narrow, on Linux UTF-8; with a folder, which counts from the current one unless it is absolute
/// @param error  0; `kModuleNotFound` when there is no such file, on Windows also when one that it needs is missing;
///               otherwise the error, on Linux `kBadExeFormat` for whatever the loader does not like
/// @return       null on an error
ZELTO_API UniqueModule LoadModule(const std::string& path, ErrorCode& error);

/// Finds a function of a module by its public name. Windows: `GetProcAddress`. Linux: `dlsym`, which also looks at the
/// modules that this one was linked with.
///
/// @return null when there is none
ZELTO_API void* FindFunction(void* module, const char* name) noexcept;

}  // namespace Zelto::Platform
