#include "zelto/text/exceptions/closed_connection_exception.h"

namespace Zelto::Communication {

ClosedConnectionException::ClosedConnectionException(const std::string& message)
    : std::runtime_error("Client connection is already closed: " + message) {}

}  // namespace Zelto::Communication
