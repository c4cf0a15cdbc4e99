#include "zelto/http/text_checks.h"

#include "zelto/platform/errors.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <string>

namespace Zelto::Utilities {

void RefuseLineBreaks(std::string_view what, std::string_view text) {
  if (text.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) {
    throw Win32Exception(std::string(what) + " must not hold CR, LF or U+0000", Platform::kInvalidParameter);
  }
}

}  // namespace Zelto::Utilities
