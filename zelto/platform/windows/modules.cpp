#include "zelto/platform/modules.h"

#include <windows.h>

namespace Zelto::Platform {

void PinModule() noexcept {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(&PinModule), &module);
}

}  // namespace Zelto::Platform
