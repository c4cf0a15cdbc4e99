#include "tests/platform/pipe_support.h"

#include <unistd.h>

namespace Zelto::Platform::Testing {

void* OpenRawClient(const std::wstring& name) {
  SharedHandle client;
  EXPECT_EQ(OpenPipe(name, client), kSuccess);
  const int copy = ::dup(static_cast<int>(reinterpret_cast<std::intptr_t>(client.Get())));
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(copy));
}

LossCodes ServerClosed() {
  return {233, 233, 233, 233};
}

bool DisconnectDropsAnswers() {
  return false;
}

}  // namespace Zelto::Platform::Testing
