#include "zelto/platform/pipe_signal.h"

#include <cerrno>
#include <csignal>
#include <ctime>

namespace Zelto::Platform {
namespace {

sigset_t PipeSignal() noexcept {
  sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, SIGPIPE);
  return set;
}

}  // namespace

PipeSignalGuard::PipeSignalGuard() noexcept {
  const sigset_t signal = PipeSignal();
  sigset_t before;
  blocked_ = ::pthread_sigmask(SIG_BLOCK, &signal, &before) == 0 && ::sigismember(&before, SIGPIPE) == 0;
}

PipeSignalGuard::~PipeSignalGuard() {
  if (!blocked_) {
    return;
  }
  const int error = errno;
  const sigset_t signal = PipeSignal();
  const timespec at_once{};
  while (::sigtimedwait(&signal, nullptr, &at_once) < 0 && errno == EINTR) {
  }
  ::pthread_sigmask(SIG_UNBLOCK, &signal, nullptr);
  errno = error;
}

}  // namespace Zelto::Platform
