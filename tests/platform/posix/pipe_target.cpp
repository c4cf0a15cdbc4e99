#include "tests/platform/pipe_support.h"

#include <unistd.h>

#include <filesystem>
#include <iterator>

namespace Zelto::Platform::Testing {

std::uint32_t ProcessId() {
  return static_cast<std::uint32_t>(::getpid());
}

void* OpenRawClient(const std::wstring& name) {
  SharedHandle client;
  EXPECT_EQ(OpenPipe(name, client), kSuccess);
  const int copy = ::dup(static_cast<int>(reinterpret_cast<std::intptr_t>(client.Get())));
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(copy));
}

std::size_t OpenHandles() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

LossCodes ServerClosed() {
  return {233, 233, 233, 233};
}

bool DisconnectDropsAnswers() {
  return false;
}

}  // namespace Zelto::Platform::Testing
