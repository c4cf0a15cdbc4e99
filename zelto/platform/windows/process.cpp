#include "zelto/platform/process.h"

#include <windows.h>

namespace Zelto::Platform {

std::uint32_t CurrentProcessId() noexcept {
  return ::GetCurrentProcessId();
}

std::uint32_t CurrentThreadId() noexcept {
  return ::GetCurrentThreadId();
}

}  // namespace Zelto::Platform
