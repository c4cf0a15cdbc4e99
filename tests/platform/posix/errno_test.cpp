#include "zelto/platform/errors.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

namespace Zelto::Platform {
namespace {

TEST(Errno, BecomesAWin32Code) {
  const struct {
    int error;
    ErrorCode code;
  } cases[] = {{ENOENT, 2},  {EACCES, 5},         {EPERM, 5},       {EBADF, 6},   {ENOMEM, 8},       {EMFILE, 4},
               {EINVAL, 87}, {EEXIST, 183},       {EPIPE, 233},     {0, 0},       {ETIMEDOUT, 1460}, {ECONNREFUSED, 2},
               {EILSEQ, 31}, {ENAMETOOLONG, 206}, {ENOTEMPTY, 145}, {EFBIG, 223}, {EXDEV, 17},       {EBUSY, 32},
               {EIO, 1117},  {ECONNRESET, 109},   {ECANCELED, 995}, {ENOSYS, 50}};
  for (const auto& test : cases) {
    errno = test.error;
    EXPECT_EQ(GetLastErrorCode(), test.code) << std::strerror(test.error);
  }
}

}  // namespace
}  // namespace Zelto::Platform
