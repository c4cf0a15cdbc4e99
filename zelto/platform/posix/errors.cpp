#include "zelto/platform/errors.h"

#include "zelto/platform/posix/errno_codes.h"

#include <cerrno>

namespace Zelto::Platform {
namespace {

// A code set by `SetLastErrorCode` lives in errno itself under this mark, far above any real errno: so the next failing
// call of the C library replaces it, as a failing Win32 call replaces the last error. Codes have at most 24 bits here.
constexpr int kMark = 0x5A000000;
constexpr int kMarkMask = 0x7F000000;

// Codes that come from an errno only.
constexpr ErrorCode kNotSameDevice = 17;    // ERROR_NOT_SAME_DEVICE
constexpr ErrorCode kGeneralFailure = 31;   // ERROR_GEN_FAILURE
constexpr ErrorCode kFolderNotEmpty = 145;  // ERROR_DIR_NOT_EMPTY
constexpr ErrorCode kNameTooLong = 206;     // ERROR_FILENAME_EXCED_RANGE
constexpr ErrorCode kFileTooLarge = 223;    // ERROR_FILE_TOO_LARGE
constexpr ErrorCode kDeviceError = 1117;    // ERROR_IO_DEVICE

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
      return kNameTooLong;
    case EEXIST:
      return kAlreadyExists;
    case ENOTEMPTY:
      return kFolderNotEmpty;
    case ENOSPC:
    case EDQUOT:
      return kDiskFull;
    case EFBIG:
      return kFileTooLarge;
    case EXDEV:
      return kNotSameDevice;
    case EBUSY:
    case ETXTBSY:
      return kSharingViolation;
    case EIO:
      return kDeviceError;
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
      return kNotSupported;
    default:
      return kGeneralFailure;
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
