#include "zelto/text/exceptions/hresult_exception.h"

#include "zelto/text/string_utilities.h"

#include <string>

namespace Zelto::Utilities {

HResultException::HResultException(std::string_view message, std::int32_t hr)
    : error_code_(hr), text_(std::string(message) + ". Error Code: " + StringUtilities::ToHexStr(hr)) {}

const char* HResultException::what() const noexcept {
  return text_.what();
}

}  // namespace Zelto::Utilities
