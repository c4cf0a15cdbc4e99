/// @file
/// The form of a message on a pipe.
#pragma once

#include <cstdint>

namespace Zelto::Utilities {

/// How text is laid out on a pipe, in both directions. No byte-order mark, length or terminator is sent. Every value
/// but 1 counts as `Utf16`.
enum class NamedPipeMessageEncoding : std::uint32_t {
  Utf16 = 0,  ///< UTF-16 code units, low byte first; a receiver cuts a chunk at U+0000
  Utf8 = 1    ///< UTF-8; a receiver cuts a chunk at U+0000
};

}  // namespace Zelto::Utilities
