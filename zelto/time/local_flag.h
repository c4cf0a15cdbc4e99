/// @file
/// Ticks and calendar fields with the flag "local". Not installed. What fails throws as `UtcTime` says.
#pragma once

#include <zelto/platform/calendar.h>

#include <cstdint>

namespace Zelto::Utilities::LocalFlag {

/// UTC ticks of ticks that are handed in; 0 for a local time too early for the scale.
std::uint64_t StoreTicks(std::uint64_t ticks, bool local);

/// UTC ticks of fields that are handed in.
std::uint64_t StoreFields(const Platform::CalendarFields& fields, bool local);

/// The ticks to hand out.
std::uint64_t HandOutTicks(std::uint64_t utc_ticks, bool local);

/// The fields to hand out.
Platform::CalendarFields HandOutFields(std::uint64_t utc_ticks, bool local);

}  // namespace Zelto::Utilities::LocalFlag
