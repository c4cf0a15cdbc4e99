#include "tests/files/small_stack.h"

#include <windows.h>

#include <stdexcept>

namespace Zelto::Testing {
namespace {

DWORD WINAPI Run(void* argument) {
  (*static_cast<std::function<void()>*>(argument))();
  return 0;
}

}  // namespace

void RunWithSmallStack(std::function<void()> function) {
  const HANDLE thread =
      ::CreateThread(nullptr, kSmallStack, &Run, &function, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  if (thread == nullptr) {
    throw std::runtime_error("CreateThread");
  }
  ::WaitForSingleObject(thread, INFINITE);
  ::CloseHandle(thread);
}

}  // namespace Zelto::Testing
