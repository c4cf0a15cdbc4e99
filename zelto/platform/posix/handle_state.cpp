#include "zelto/platform/handle_state.h"

#include "zelto/platform/posix/descriptor.h"
#include "zelto/platform/posix/pipe_end.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

namespace Zelto::Platform {
namespace {

// A descriptor that a caller handed over. It becomes a pipe's end when an operation asks for one.
class AdoptedDescriptor final : public HandleState {
 public:
  explicit AdoptedDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  void* Native() const noexcept override { return HandleFromDescriptor(descriptor_.Get()); }

  PipeEnd* Pipe() noexcept override {
    const std::lock_guard<std::mutex> guard(lock_);
    if (!end_ && PipeEnd::CanAdopt(descriptor_.Get())) {
      end_.reset(new (std::nothrow) PipeEnd(descriptor_.Get()));
    }
    return end_.get();
  }

 private:
  UniqueDescriptor descriptor_;
  std::mutex lock_;
  std::unique_ptr<PipeEnd> end_;
};

}  // namespace

int AvoidStandardStreams(int descriptor) noexcept {
  if (descriptor < 0 || descriptor > STDERR_FILENO) {
    return descriptor;
  }
  const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return moved;
}

void UniqueDescriptor::Reset(int descriptor) noexcept {
  const int old = std::exchange(descriptor_, descriptor);
  if (old >= 0) {
    const int error = errno;
    ::close(old);
    errno = error;
  }
}

std::shared_ptr<HandleState> AdoptHandle(void* handle) {
  UniqueDescriptor owner(DescriptorFromHandle(handle));
  auto state = std::make_shared<AdoptedDescriptor>(owner.Get());
  owner.Release();
  return state;
}

}  // namespace Zelto::Platform
