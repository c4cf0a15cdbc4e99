#include "zelto/platform/process.h"

#include <unistd.h>

namespace Zelto::Platform {

std::uint32_t CurrentProcessId() noexcept {
  return static_cast<std::uint32_t>(::getpid());
}

}  // namespace Zelto::Platform
