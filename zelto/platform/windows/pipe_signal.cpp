#include "zelto/platform/pipe_signal.h"

namespace Zelto::Platform {

PipeSignalGuard::PipeSignalGuard() noexcept = default;

PipeSignalGuard::~PipeSignalGuard() = default;

}  // namespace Zelto::Platform
