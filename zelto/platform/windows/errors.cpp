#include "zelto/platform/errors.h"

#include <windows.h>

namespace Zelto::Platform {

ErrorCode GetLastErrorCode() noexcept {
  return ::GetLastError();
}

void SetLastErrorCode(ErrorCode code) noexcept {
  ::SetLastError(code);
}

}  // namespace Zelto::Platform
