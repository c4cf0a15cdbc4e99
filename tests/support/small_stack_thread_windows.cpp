#include "tests/support/small_stack_thread.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace Zelto::Testing {
namespace {

DWORD WINAPI Run(void* argument) {
  (*static_cast<const std::function<void()>*>(argument))();
  return 0;
}

}  // namespace

void RunOnSmallStack(std::size_t stack_bytes, const std::function<void()>& work) {
  const HANDLE thread = CreateThread(nullptr, stack_bytes, &Run, const_cast<std::function<void()>*>(&work),
                                     STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
  CloseHandle(thread);
}

}  // namespace Zelto::Testing
