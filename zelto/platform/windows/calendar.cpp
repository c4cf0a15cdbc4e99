#include "zelto/platform/calendar.h"

#include "zelto/platform/calendar_types.h"

#include <bit>

namespace Zelto::Platform {
namespace {

constexpr std::uint16_t kFirstYear = 1601;
constexpr std::uint16_t kLastYear = 30'827;
constexpr std::int64_t kTicksPerMinute = 600'000'000;

SYSTEMTIME ToSystem(const CalendarFields& fields) noexcept {
  return std::bit_cast<SYSTEMTIME>(fields);
}

ErrorCode FailureCode() noexcept {
  const ErrorCode code = ::GetLastError();
  return code == kSuccess ? kInvalidParameter : code;
}

// What the documentation refuses is tested here where not every implementation of the system's calls does.
bool IsInCalendar(const CalendarFields& fields) noexcept {
  const bool leap_year = fields.year % 4 == 0 && (fields.year % 100 != 0 || fields.year % 400 == 0);
  return fields.year >= kFirstYear && fields.year <= kLastYear &&
         (fields.month != 2 || fields.day < 29 || (fields.day == 29 && leap_year));
}

bool SetSwitch(const ZoneSwitch& change, SYSTEMTIME& date) noexcept {
  date = {};
  if (change.form == ZoneSwitch::Form::Never) {
    return true;
  }
  if (change.form != ZoneSwitch::Form::Weekday || change.month < 1 || change.month > 12 || change.week < 1 ||
      change.week > 5 || change.day > 6 || change.seconds < 0 || change.seconds >= 86'400) {
    return false;
  }
  date.wMonth = change.month;
  date.wDay = change.week;
  date.wDayOfWeek = change.day;
  date.wHour = static_cast<WORD>(change.seconds / 3'600);
  date.wMinute = static_cast<WORD>(change.seconds / 60 % 60);
  date.wSecond = static_cast<WORD>(change.seconds % 60);
  return true;
}

bool SetZone(const ZoneRecord& zone, TIME_ZONE_INFORMATION& info) noexcept {
  if (zone.bias % 60 != 0 || zone.standard_bias % 60 != 0 || zone.daylight_bias % 60 != 0 ||
      (zone.to_standard.form == ZoneSwitch::Form::Never) != (zone.to_daylight.form == ZoneSwitch::Form::Never)) {
    return false;
  }
  info.Bias = zone.bias / 60;
  info.StandardBias = zone.standard_bias / 60;
  info.DaylightBias = zone.daylight_bias / 60;
  return SetSwitch(zone.to_standard, info.StandardDate) && SetSwitch(zone.to_daylight, info.DaylightDate);
}

ErrorCode UtcToLocal(const TIME_ZONE_INFORMATION& info, const CalendarFields& utc, CalendarFields& local) noexcept {
  const SYSTEMTIME from = ToSystem(utc);
  SYSTEMTIME to{};
  if (!IsInCalendar(utc)) {
    return kInvalidParameter;
  }
  if (!::SystemTimeToTzSpecificLocalTime(&info, &from, &to)) {
    return FailureCode();
  }
  local = std::bit_cast<CalendarFields>(to);
  return kSuccess;
}

ErrorCode LocalToUtc(const TIME_ZONE_INFORMATION& info, const CalendarFields& local, CalendarFields& utc) noexcept {
  const SYSTEMTIME from = ToSystem(local);
  SYSTEMTIME to{};
  if (!IsInCalendar(local)) {
    return kInvalidParameter;
  }
  if (!::TzSpecificLocalTimeToSystemTime(&info, &from, &to)) {
    return FailureCode();
  }
  utc = std::bit_cast<CalendarFields>(to);
  return kSuccess;
}

}  // namespace

std::uint64_t CurrentTicks() noexcept {
  FILETIME now{};
  ::GetSystemTimePreciseAsFileTime(&now);
  return std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
}

ErrorCode TicksToFields(std::uint64_t ticks, CalendarFields& fields) noexcept {
  const FILETIME from{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  SYSTEMTIME to{};
  if (!::FileTimeToSystemTime(&from, &to)) {
    return FailureCode();
  }
  fields = std::bit_cast<CalendarFields>(to);
  return kSuccess;
}

ErrorCode FieldsToTicks(const CalendarFields& fields, std::uint64_t& ticks) noexcept {
  const SYSTEMTIME from = ToSystem(fields);
  FILETIME to{};
  if (!IsInCalendar(fields)) {
    return kInvalidParameter;
  }
  if (!::SystemTimeToFileTime(&from, &to)) {
    return FailureCode();
  }
  ticks = std::uint64_t{to.dwHighDateTime} << 32 | to.dwLowDateTime;
  return kSuccess;
}

ErrorCode UtcToLocal(const ZoneRecord& zone, const CalendarFields& utc, CalendarFields& local) noexcept {
  TIME_ZONE_INFORMATION info{};
  return SetZone(zone, info) ? UtcToLocal(info, utc, local) : kInvalidParameter;
}

ErrorCode LocalToUtc(const ZoneRecord& zone, const CalendarFields& local, CalendarFields& utc) noexcept {
  TIME_ZONE_INFORMATION info{};
  return SetZone(zone, info) ? LocalToUtc(info, local, utc) : kInvalidParameter;
}

// The zone is always passed: without one the system's calls would take each year's own rules.
ErrorCode UtcToLocal(const CalendarFields& utc, CalendarFields& local) noexcept {
  TIME_ZONE_INFORMATION info{};
  return ::GetTimeZoneInformation(&info) == TIME_ZONE_ID_INVALID ? FailureCode() : UtcToLocal(info, utc, local);
}

ErrorCode LocalToUtc(const CalendarFields& local, CalendarFields& utc) noexcept {
  TIME_ZONE_INFORMATION info{};
  return ::GetTimeZoneInformation(&info) == TIME_ZONE_ID_INVALID ? FailureCode() : LocalToUtc(info, local, utc);
}

std::int64_t CurrentBiasTicks() noexcept {
  TIME_ZONE_INFORMATION info{};
  const DWORD season = ::GetTimeZoneInformation(&info);
  if (season == TIME_ZONE_ID_INVALID) {
    return 0;
  }
  return (info.Bias + (season == TIME_ZONE_ID_DAYLIGHT ? info.DaylightBias : 0)) * kTicksPerMinute;
}

}  // namespace Zelto::Platform
