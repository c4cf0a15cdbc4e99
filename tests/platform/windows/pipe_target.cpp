#include "tests/platform/pipe_support.h"

#include <windows.h>

namespace Zelto::Platform::Testing {

void* OpenRawClient(const std::wstring& name) {
  return ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED,
                       nullptr);
}

LossCodes ServerClosed() {
  return {109, 232, 109, 109};
}

bool DisconnectDropsAnswers() {
  return true;
}

}  // namespace Zelto::Platform::Testing
