#include "zelto/http/text_checks.h"

#include "zelto/platform/errors.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <string>

namespace Zelto::Utilities {

void RefuseLineBreak(std::string_view what) {
  throw Win32Exception(std::string(what) + " must not hold CR, LF or U+0000", Platform::kInvalidParameter);
}

}  // namespace Zelto::Utilities
