/// @file
/// The exceptions of data resources.
#pragma once

#include <zelto/export.h>

#include <stdexcept>
#include <string>

namespace Zelto::Utilities {

/// A data filter is not usable. Its text is the message as given.
class ZELTO_API DataFilterException : public std::runtime_error {
 public:
  explicit DataFilterException(const std::string& message);
};

/// A page of data cannot be had. Its text is the message as given.
class ZELTO_API DataPaginationException : public std::runtime_error {
 public:
  explicit DataPaginationException(const std::string& message);
};

}  // namespace Zelto::Utilities
