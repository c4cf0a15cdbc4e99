#include "zelto/platform/posix/file_write.h"

#include "zelto/platform/posix/blocked_signal.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace Zelto::Platform {
namespace {

bool HasSizeLimit() noexcept {
  rlimit limit{};
  return ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
}

}  // namespace

ssize_t WriteToFile(int descriptor, const void* bytes, std::size_t count) noexcept {
  const bool blocked = HasSizeLimit() && BlockSignal(SIGXFSZ);
  ssize_t written = 0;
  do {
    written = ::write(descriptor, bytes, count);
  } while (written < 0 && errno == EINTR);
  if (blocked) {
    UnblockSignal(SIGXFSZ);
  }
  return written;
}

}  // namespace Zelto::Platform
