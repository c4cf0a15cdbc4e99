#include "zelto/http/text_checks.h"

#include "zelto/platform/errors.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <algorithm>
#include <string>

namespace Zelto::Utilities {

void RefuseLineBreaks(std::string_view what, std::string_view text) {
  const auto is_refused = [](char byte) { return byte == '\r' || byte == '\n' || byte == '\0'; };
  if (std::any_of(text.begin(), text.end(), is_refused)) {
    throw Win32Exception(std::string(what) + " must not hold CR, LF or U+0000", Platform::kInvalidParameter);
  }
}

}  // namespace Zelto::Utilities
