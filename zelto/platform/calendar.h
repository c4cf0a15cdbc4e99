/// @file
/// The system's clock, its calendar and its time zone.
///
/// Ticks are 100-nanosecond units since 1601-01-01 00:00:00. The calendar is the Gregorian one for every year; it takes
/// fields of the years 1601 to 30827 and ticks below 2 to the 63rd. Every function may be called on any thread.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/errors.h>

#include <cstdint>

namespace Zelto::Platform {

/// Calendar fields, laid out like `SYSTEMTIME`.
struct CalendarFields {
  std::uint16_t year = 0;
  std::uint16_t month = 0;        ///< 1 to 12
  std::uint16_t day_of_week = 0;  ///< 0 is Sunday; set by conversions, never read
  std::uint16_t day = 0;          ///< 1 to 31
  std::uint16_t hour = 0;
  std::uint16_t minute = 0;
  std::uint16_t second = 0;
  std::uint16_t milliseconds = 0;

  friend bool operator==(const CalendarFields&, const CalendarFields&) = default;
};

/// When a zone changes its clocks, in each year.
struct ZoneSwitch {
  enum class Form : std::uint8_t {
    Never,
    Weekday,      ///< the `week`-th `day` (0 is Sunday) of `month`; week 5 is the last
    YearDay,      ///< the `day`-th day of the year, 1 to 365; 29 February is never counted
    LeapYearDay,  ///< `day` days after 1 January, 0 to 365; 29 February is counted
  };

  Form form = Form::Never;
  std::uint8_t month = 0;
  std::uint8_t week = 0;
  std::uint16_t day = 0;
  std::int32_t seconds = 0;  ///< from that day's midnight, on the clock as it is before the switch
};

/// A time zone: one pair of switches that holds for every year, as `TIME_ZONE_INFORMATION` has it.
///
/// UTC is local time plus `bias` plus the bias of the season. Either both switches are given or none.
/// Windows takes weekday switches within their day and biases of whole minutes only. Linux also takes the other forms,
/// switches up to 167 hours to either side and seconds in biases.
struct ZoneRecord {
  std::int32_t bias = 0;           ///< seconds
  std::int32_t standard_bias = 0;  ///< seconds
  std::int32_t daylight_bias = 0;  ///< seconds, usually -3600
  ZoneSwitch to_standard;
  ZoneSwitch to_daylight;
};

/// The current time in UTC. Windows: `GetSystemTimePreciseAsFileTime`. Linux: `CLOCK_REALTIME`.
ZELTO_API std::uint64_t CurrentTicks() noexcept;

/// Splits ticks into fields and cuts them to milliseconds. Windows: `FileTimeToSystemTime`.
///
/// @return 0, or `kInvalidParameter` for ticks of 2 to the 63rd or more
ZELTO_API ErrorCode TicksToFields(std::uint64_t ticks, CalendarFields& fields) noexcept;

/// Joins fields to ticks. Windows: `SystemTimeToFileTime`.
///
/// @return 0, or `kInvalidParameter` for fields that name no day or no time of day, or a year that is out of range
ZELTO_API ErrorCode FieldsToTicks(const CalendarFields& fields, std::uint64_t& ticks) noexcept;

/// Converts UTC to the local time of a zone.
///
/// @return 0, or `kInvalidParameter`: the fields, the zone or the result are not valid
///
/// Windows: `SystemTimeToTzSpecificLocalTime`. Linux: the same rules, our own arithmetic.
ZELTO_API ErrorCode UtcToLocal(const ZoneRecord& zone, const CalendarFields& utc, CalendarFields& local) noexcept;

/// Converts the local time of a zone to UTC. An hour that occurs twice is read as its first pass, daylight time; a time
/// in the hour that is left out is read as daylight time too.
///
/// @return 0, or `kInvalidParameter`: the fields, the zone or the result are not valid
///
/// Windows: `TzSpecificLocalTimeToSystemTime`. Linux: the same rules, our own arithmetic.
ZELTO_API ErrorCode LocalToUtc(const ZoneRecord& zone, const CalendarFields& local, CalendarFields& utc) noexcept;

/// The same with the current zone: its rules of today hold for every year.
///
/// Windows: the zone of `GetTimeZoneInformation`. Linux: the rule that `TZ` names or spells (`:` in front, a zone
/// file's name or path, or a rule as in "CET-1CEST,M3.5.0,M10.5.0/3"), else the rule at the end of /etc/localtime; UTC
/// when there is none or it is not valid. A zone file is looked at again after a second, `TZ` every time.
ZELTO_API ErrorCode UtcToLocal(const CalendarFields& utc, CalendarFields& local) noexcept;
ZELTO_API ErrorCode LocalToUtc(const CalendarFields& local, CalendarFields& utc) noexcept;

/// What has to be added to local time to get UTC, in the current zone now, in ticks: the zone's bias, and the daylight
/// bias when it has daylight time now.
ZELTO_API std::int64_t CurrentBiasTicks() noexcept;

}  // namespace Zelto::Platform
