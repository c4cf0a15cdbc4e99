/// @file
/// The exception for failures of RSA.
#pragma once

#include <zelto/export.h>

#include <exception>
#include <stdexcept>
#include <string>

namespace Zelto::Utilities {

/// An RSA operation failed.
///
/// The text is had by `RsaError::what()` on the `RsaError` itself. Through `std::exception` only the standard library's
/// default text is seen: the operation here hides the virtual one and does not override it.
class ZELTO_API RsaError : public std::exception {
 public:
  /// @param text  zero-terminated; null counts as empty
  explicit RsaError(const char* text);

  /// A copy of the text given to the constructor.
  std::string what();

 private:
  using std::exception::what;  // hidden on purpose: a const RsaError has no text of its own to offer

  std::runtime_error text_;  // copies without throwing, as an exception should
};

}  // namespace Zelto::Utilities
