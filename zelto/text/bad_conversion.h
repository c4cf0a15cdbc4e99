/// @file
/// The failure of every conversion of text. Not installed.
#pragma once

#include <stdexcept>

namespace Zelto::Utilities {

/// @throws std::range_error  "bad conversion"
[[noreturn]] inline void ThrowBadConversion() {
  throw std::range_error("bad conversion");
}

}  // namespace Zelto::Utilities
