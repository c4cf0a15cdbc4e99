/// @file
/// The grammar of ISO 8601 texts, and numbers at fixed positions. Not installed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Zelto::Utilities::Iso8601 {

/// What `UtcTime::IsISO8601DateTime` says.
bool Matches(std::wstring_view text) noexcept;

/// Reads the number in at most `length` characters from `position` as `wcstol` does: white space, a sign, digits; 0
/// when there is none.
///
/// @throws std::out_of_range  "invalid string position" when `position` is greater than the text's length
int ReadField(std::wstring_view text, std::size_t position, std::size_t length);

}  // namespace Zelto::Utilities::Iso8601
