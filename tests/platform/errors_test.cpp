#include "zelto/platform/errors.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <thread>

namespace Zelto::Platform::Testing {
namespace {

TEST(LastError, ComesBackAsItWasSet) {
  for (const ErrorCode code : {kSuccess, kFileNotFound, kInvalidExeSignature, kPipeNotConnected, kIoPending, kNotFound,
                               ErrorCode{1234}, ErrorCode{12345678}}) {
    SetLastErrorCode(code);
    EXPECT_EQ(GetLastErrorCode(), code);
    EXPECT_EQ(GetLastErrorCode(), code) << "reading must not change it";
  }
}

TEST(LastError, IsReplacedByAFailingCallOfTheSystem) {
  SetLastErrorCode(kPipeBusy);
  ASSERT_NE(std::remove("zelto-no-such-file"), 0);
  EXPECT_EQ(GetLastErrorCode(), kFileNotFound);
}

TEST(LastError, BelongsToItsThread) {
  std::atomic<bool> begin{false};
  std::atomic<bool> done{false};
  std::thread thread([&] {
    while (!begin) {
      std::this_thread::yield();
    }
    SetLastErrorCode(kTimeout);
    done = true;
  });
  SetLastErrorCode(kPipeBusy);
  begin = true;
  while (!done) {
    std::this_thread::yield();
  }
  EXPECT_EQ(GetLastErrorCode(), kPipeBusy);
  thread.join();
}

}  // namespace
}  // namespace Zelto::Platform::Testing
