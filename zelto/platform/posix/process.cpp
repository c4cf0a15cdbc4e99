#include "zelto/platform/process.h"

#include <unistd.h>

namespace Zelto::Platform {

std::uint32_t CurrentProcessId() noexcept {
  return static_cast<std::uint32_t>(::getpid());
}

std::uint32_t CurrentThreadId() noexcept {
  return static_cast<std::uint32_t>(::gettid());
}

}  // namespace Zelto::Platform
