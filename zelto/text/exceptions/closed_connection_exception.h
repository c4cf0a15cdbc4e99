/// @file
/// The exception for a peer that has gone.
#pragma once

#include <zelto/export.h>

#include <stdexcept>
#include <string>

namespace Zelto::Communication {

/// The client's connection is closed. Its text is "Client connection is already closed", ": " and the message; the ": "
/// is there when the message is empty, too.
class ZELTO_API ClosedConnectionException : public std::runtime_error {
 public:
  explicit ClosedConnectionException(const std::string& message);
};

}  // namespace Zelto::Communication
