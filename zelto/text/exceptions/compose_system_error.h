/// @file
/// The text shared by the exceptions that carry a system error. Not installed.
#pragma once

#include <cstdint>
#include <string_view>
#include <system_error>

namespace Zelto::Utilities {

/// A system error whose text is the message, ": " unless the message is empty, and the description of the code.
std::system_error ComposeSystemError(std::string_view message, std::uint32_t code);

}  // namespace Zelto::Utilities
