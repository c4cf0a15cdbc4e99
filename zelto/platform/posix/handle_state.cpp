#include "zelto/platform/handle_state.h"

#include "zelto/platform/posix/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Zelto::Platform {
namespace {

class Descriptor final : public HandleState {
 public:
  explicit Descriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  ~Descriptor() override { ::close(descriptor_); }
  void* Native() const noexcept override { return HandleFromDescriptor(descriptor_); }

 private:
  int descriptor_;
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

std::shared_ptr<HandleState> AdoptHandle(void* handle) {
  const int descriptor = DescriptorFromHandle(handle);
  try {
    return std::make_shared<Descriptor>(descriptor);
  } catch (...) {
    ::close(descriptor);
    throw;
  }
}

}  // namespace Zelto::Platform
