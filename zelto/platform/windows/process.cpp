#include "zelto/platform/process.h"

#include <windows.h>

namespace Zelto::Platform {

std::uint32_t CurrentProcessId() noexcept {
  return ::GetCurrentProcessId();
}

}  // namespace Zelto::Platform
