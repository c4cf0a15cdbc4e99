#include "zelto/text/exceptions/compose_system_error.h"

#include "zelto/text/exceptions/system_error_category.h"

#include <string>

namespace Zelto::Utilities {

std::system_error ComposeSystemError(std::string_view message, std::uint32_t code) {
  const std::error_code error(static_cast<int>(code), SystemErrorCategory());
  // With a message the standard constructor always writes the ": ", also in front of nothing; the plain one writes the
  // description alone.
  return message.empty() ? std::system_error(error) : std::system_error(error, std::string(message));
}

}  // namespace Zelto::Utilities
