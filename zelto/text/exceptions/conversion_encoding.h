/// @file
/// The encodings that conversions go between.
#pragma once

#include <cstdint>

namespace Zelto::Utilities {

/// An encoding of text. A value outside this list is called "UNKNOWN" in messages.
enum class ConversionEncoding : std::uint32_t {
  Utf16 = 0,
  Utf8 = 1,
};

}  // namespace Zelto::Utilities
