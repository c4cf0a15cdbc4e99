#include "zelto/text/exceptions/rsa_error.h"

namespace Zelto::Utilities {

RsaError::RsaError(const char* text) : text_(text != nullptr ? text : "") {}

std::string RsaError::what() {
  return text_.what();
}

}  // namespace Zelto::Utilities
