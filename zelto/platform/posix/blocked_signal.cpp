#include "zelto/platform/posix/blocked_signal.h"

#include <cerrno>
#include <csignal>
#include <ctime>

namespace Zelto::Platform {
namespace {

sigset_t SetOf(int signal) noexcept {
  sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, signal);
  return set;
}

}  // namespace

bool BlockSignal(int signal) noexcept {
  const sigset_t set = SetOf(signal);
  sigset_t before;
  return ::pthread_sigmask(SIG_BLOCK, &set, &before) == 0 && ::sigismember(&before, signal) == 0;
}

void UnblockSignal(int signal) noexcept {
  const int error = errno;
  const sigset_t set = SetOf(signal);
  const timespec at_once{};
  while (::sigtimedwait(&set, nullptr, &at_once) < 0 && errno == EINTR) {
  }
  ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  errno = error;
}

}  // namespace Zelto::Platform
