#include "zelto/text/exceptions/data_exceptions.h"

namespace Zelto::Utilities {

DataFilterException::DataFilterException(const std::string& message) : std::runtime_error(message) {}

DataPaginationException::DataPaginationException(const std::string& message) : std::runtime_error(message) {}

}  // namespace Zelto::Utilities
