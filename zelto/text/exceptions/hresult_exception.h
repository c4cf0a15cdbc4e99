/// @file
/// The exception for a failed HRESULT.
#pragma once

#include <zelto/export.h>

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string_view>

namespace Zelto::Utilities {

/// A call that reports by HRESULT failed.
///
/// Its text is the message, ". Error Code: " and the code as `StringUtilities::ToHexStr` writes it:
/// `HResultException("No device", 0x80004005)` says "No device. Error Code: 0x80004005".
class ZELTO_API HResultException : public std::exception {
 public:
  HResultException(std::string_view message, std::int32_t hr);

  std::int32_t GetErrorCode() const noexcept { return error_code_; }

  const char* what() const noexcept override;

 private:
  std::int32_t error_code_;
  std::runtime_error text_;  // copies without throwing, as an exception should
};

}  // namespace Zelto::Utilities
