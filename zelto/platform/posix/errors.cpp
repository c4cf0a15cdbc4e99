#include "zelto/platform/errors.h"

#include "zelto/platform/posix/errno_codes.h"

#include <cerrno>

namespace Zelto::Platform {
namespace {

// A code set by `SetLastErrorCode` lives in errno itself under this mark, far above any real errno: so the next failing
// call of the C library replaces it, as a failing Win32 call replaces the last error. Codes have at most 24 bits here.
constexpr int kMark = 0x5A000000;
constexpr int kMarkMask = 0x7F000000;

}  // namespace

ErrorCode CodeFromErrno(int error) noexcept {
  switch (error) {
    case 0:
      return kSuccess;
    case ENOENT:
      return kFileNotFound;
    case ENOTDIR:
      return kPathNotFound;
    case EMFILE:
    case ENFILE:
      return kTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS:
      return kAccessDenied;
    case EBADF:
    case ENOTSOCK:
      return kInvalidHandle;
    case ENOMEM:
    case ENOBUFS:
      return kNotEnoughMemory;
    case EINVAL:
      return kInvalidParameter;
    case ENAMETOOLONG:
      return 206;  // ERROR_FILENAME_EXCED_RANGE
    case EEXIST:
      return 183;  // ERROR_ALREADY_EXISTS
    case ENOTEMPTY:
      return 145;  // ERROR_DIR_NOT_EMPTY
    case ENOSPC:
    case EDQUOT:
      return 112;  // ERROR_DISK_FULL
    case EFBIG:
      return 223;  // ERROR_FILE_TOO_LARGE
    case EXDEV:
      return 17;  // ERROR_NOT_SAME_DEVICE
    case EBUSY:
    case ETXTBSY:
      return 32;  // ERROR_SHARING_VIOLATION
    case EIO:
      return 1117;  // ERROR_IO_DEVICE
    case EPIPE:
    case ENOTCONN:
      return kPipeNotConnected;
    case ECONNRESET:
      return kBrokenPipe;
    case ECONNREFUSED:
      return kFileNotFound;  // a socket file that nobody listens on is a dead server's
    case EAGAIN:
      return kPipeBusy;
    case ETIMEDOUT:
      return kTimeout;
    case ECANCELED:
      return kOperationAborted;
    case ENOSYS:
    case EOPNOTSUPP:
      return 50;  // ERROR_NOT_SUPPORTED
    default:
      return 31;  // ERROR_GEN_FAILURE
  }
}

ErrorCode GetLastErrorCode() noexcept {
  const int error = errno;
  if ((error & kMarkMask) == kMark) {
    return static_cast<ErrorCode>(error & ~kMarkMask);
  }
  return CodeFromErrno(error);
}

void SetLastErrorCode(ErrorCode code) noexcept {
  errno = kMark | static_cast<int>(code & ~0xFF000000U);
}

}  // namespace Zelto::Platform
