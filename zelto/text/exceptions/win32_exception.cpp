#include "zelto/text/exceptions/win32_exception.h"

#include "zelto/platform/errors.h"
#include "zelto/text/exceptions/compose_system_error.h"

#include <string>

namespace Zelto::Utilities {
namespace {

std::string WithCodeWhenUnknown(std::string text, std::uint32_t code) {
  if (text.find(": unknown error") != std::string::npos) {
    text += ". Error Code: " + std::to_string(code);
  }
  return text;
}

}  // namespace

Win32Exception::Win32Exception(std::string_view message) : Win32Exception(message, Platform::GetLastErrorCode()) {}

Win32Exception::Win32Exception(std::string_view message, std::uint32_t code)
    : std::system_error(ComposeSystemError(message, code)),
      error_code_(code),
      text_(WithCodeWhenUnknown(std::system_error::what(), code)) {}

std::uint32_t Win32Exception::Win32FromHRESULT(std::int32_t hr) noexcept {
  // Not the usual test of the facility: callers depend on 1627 for every failure.
  const auto bits = static_cast<std::uint32_t>(hr);
  if ((bits & 0xFFFF0000U) == (bits | 0x80070000U)) {
    return bits & 0xFFFFU;
  }
  constexpr std::uint32_t kFunctionFailed = 1627;  // ERROR_FUNCTION_FAILED
  return bits != 0 ? kFunctionFailed : 0;
}

const char* Win32Exception::what() const noexcept {
  return text_.what();
}

}  // namespace Zelto::Utilities
