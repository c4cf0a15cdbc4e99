#include "zelto/platform/errors.h"

#include <gtest/gtest.h>

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
  SetLastErrorCode(kPipeBusy);
  std::thread([] { EXPECT_NE(GetLastErrorCode(), kPipeBusy); }).join();
}

}  // namespace
}  // namespace Zelto::Platform::Testing
