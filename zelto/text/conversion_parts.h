/// @file
/// The sizes of the pieces in which text is converted between UTF-8 and UTF-16, in bytes or units. Not installed.
#pragma once

#include <cstddef>

namespace Zelto::Utilities {

/// Text is converted in parts, each into a buffer on the stack: short text is allocated once with its final length, and
/// what is written beyond a run of ASCII does no harm.
inline constexpr std::size_t kPart = 512;

/// What is looked at in one step: a loop of this fixed length compiles to vector instructions.
inline constexpr std::size_t kBlock = 64;

/// Text up to this size is short: it is converted on the stack in smaller steps.
inline constexpr std::size_t kShort = 64;
inline constexpr std::size_t kStep = 16;

}  // namespace Zelto::Utilities
