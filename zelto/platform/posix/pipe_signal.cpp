#include "zelto/platform/pipe_signal.h"

#include "zelto/platform/posix/blocked_signal.h"

#include <csignal>

namespace Zelto::Platform {

PipeSignalGuard::PipeSignalGuard() noexcept : blocked_(BlockSignal(SIGPIPE)) {}

PipeSignalGuard::~PipeSignalGuard() {
  if (blocked_) {
    UnblockSignal(SIGPIPE);
  }
}

}  // namespace Zelto::Platform
