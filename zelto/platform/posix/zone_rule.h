/// @file
/// Time zones as their texts and files give them. Not installed.
#pragma once

#include <zelto/platform/calendar.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace Zelto::Platform {

/// Reads a zone's rule as POSIX writes it: "EST5EDT,M3.2.0,M11.1.0", "<+0545>-5:45", "EST5EDT" (with the rule of the
/// United States).
///
/// Offsets go to 24 hours, switches to 167 hours to either side (as zone files have them), both with minutes and
/// seconds. The whole text must be a rule; nothing is returned otherwise.
std::optional<ZoneRecord> ParseZoneRule(std::string_view text) noexcept;

/// Reads the rule that holds today from the bytes of a compiled zone file (TZif).
///
/// The rule at the file's end is taken; a file without one gives the standing offset of the last change before `now`.
///
/// @param now  seconds since 1970
/// @return nothing when the bytes are not a whole zone file
std::optional<ZoneRecord> ParseZoneFile(std::string_view bytes, std::int64_t now) noexcept;

}  // namespace Zelto::Platform
