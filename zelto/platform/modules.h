/// @file
/// This library as a loaded module.
#pragma once

#include <zelto/export.h>

namespace Zelto::Platform {

/// Keeps this module loaded until the process ends. Called before the first thread of the library starts, so that an
/// unloading host cannot take the code away from under it. Later calls do nothing.
///
/// Windows: `GetModuleHandleExW` with `GET_MODULE_HANDLE_EX_FLAG_PIN`. Linux: `dlopen` with `RTLD_NODELETE`.
ZELTO_API void PinModule() noexcept;

}  // namespace Zelto::Platform
