#include "zelto/platform/calendar.h"

#include "zelto/platform/posix/current_zone.h"

#include <ctime>
#include <limits>

namespace Zelto::Platform {
namespace {

constexpr std::int64_t kTicksPerMillisecond = 10'000;
constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kUnixEpochSeconds = 11'644'473'600;  // 1970-01-01 on the scale
constexpr std::int64_t kSecondsPerDay = 86'400;
constexpr std::int64_t kTicksPerDay = kSecondsPerDay * kTicksPerSecond;
constexpr std::uint16_t kFirstYear = 1601;
constexpr std::uint16_t kLastYear = 30'827;
constexpr std::uint32_t kFirstYearFromMarch = 306;  // days from 1600-03-01 to 1601-01-01
constexpr std::int32_t kMaximumSwitchSeconds = 167 * 3'600 + 3'599;
constexpr std::int32_t kMaximumBiasSeconds = 7 * 86'400;

bool IsLeapYear(std::uint32_t year) noexcept {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

std::uint32_t DaysInMonth(std::uint32_t year, std::uint32_t month) noexcept {
  constexpr std::uint8_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29U : kDays[month - 1];
}

// Years are counted from March, so that the leap day is the last of its year; the scale starts a 400-year cycle.
std::uint32_t DaysSinceStart(std::uint32_t year, std::uint32_t month, std::uint32_t day) noexcept {
  const std::uint32_t from_march = month > 2 ? month - 3 : month + 9;
  const std::uint32_t years = year - (month > 2 ? 0 : 1) - (kFirstYear - 1U);
  const std::uint32_t day_of_year = (153 * from_march + 2) / 5 + day - 1;
  return 365 * years + years / 4 - years / 100 + years / 400 + day_of_year - kFirstYearFromMarch;
}

void SetDate(std::uint32_t days, CalendarFields& fields) noexcept {
  fields.day_of_week = static_cast<std::uint16_t>((days + 1) % 7);  // 1601-01-01 is a Monday
  const std::uint32_t quarters = 4 * (days + kFirstYearFromMarch) + 3;
  const std::uint32_t century = quarters / 146'097;
  const std::uint32_t in_century = quarters % 146'097 / 4 * 4 + 3;
  const std::uint32_t day_of_year = in_century % 1'461 / 4;
  const std::uint32_t from_march = (5 * day_of_year + 2) / 153;
  const std::uint32_t after_december = from_march >= 10 ? 1 : 0;
  fields.year = static_cast<std::uint16_t>(kFirstYear - 1U + 100 * century + in_century / 1'461 + after_december);
  fields.month = static_cast<std::uint16_t>(from_march + 3 - 12 * after_december);
  fields.day = static_cast<std::uint16_t>(day_of_year - (153 * from_march + 2) / 5 + 1);
}

bool IsValidSwitch(const ZoneSwitch& change) noexcept {
  if (change.seconds < -kMaximumSwitchSeconds || change.seconds > kMaximumSwitchSeconds) {
    return false;
  }
  switch (change.form) {
    case ZoneSwitch::Form::Never:
      return true;
    case ZoneSwitch::Form::Weekday:
      return change.month >= 1 && change.month <= 12 && change.week >= 1 && change.week <= 5 && change.day <= 6;
    case ZoneSwitch::Form::YearDay:
      return change.day >= 1 && change.day <= 365;
    case ZoneSwitch::Form::LeapYearDay:
      return change.day <= 365;
  }
  return false;
}

bool IsValidBias(std::int32_t seconds) noexcept {
  return seconds >= -kMaximumBiasSeconds && seconds <= kMaximumBiasSeconds;
}

bool HasDaylightTime(const ZoneRecord& zone) noexcept {
  return zone.to_daylight.form != ZoneSwitch::Form::Never;
}

bool IsValidZone(const ZoneRecord& zone) noexcept {
  return IsValidBias(zone.bias) && IsValidBias(zone.standard_bias) && IsValidBias(zone.daylight_bias) &&
         IsValidSwitch(zone.to_standard) && IsValidSwitch(zone.to_daylight) &&
         HasDaylightTime(zone) == (zone.to_standard.form != ZoneSwitch::Form::Never);
}

// The first midnight of the day that a switch names, in days since the start.
std::uint32_t SwitchDay(const ZoneSwitch& change, std::uint32_t year) noexcept {
  const std::uint32_t new_year = DaysSinceStart(year, 1, 1);
  if (change.form == ZoneSwitch::Form::LeapYearDay) {
    return new_year + change.day;
  }
  if (change.form == ZoneSwitch::Form::YearDay) {
    return new_year + change.day - 1U + (IsLeapYear(year) && change.day >= 60 ? 1 : 0);
  }
  const std::uint32_t first = DaysSinceStart(year, change.month, 1);
  const std::uint32_t to_weekday = (change.day + 7U - (first + 1) % 7) % 7;
  std::uint32_t in_month = to_weekday + 7U * (change.week - 1U);
  while (in_month >= DaysInMonth(year, change.month)) {
    in_month -= 7;
  }
  return first + in_month;
}

std::int64_t SwitchTicks(const ZoneSwitch& change, std::uint32_t year) noexcept {
  return (SwitchDay(change, year) * kSecondsPerDay + change.seconds) * kTicksPerSecond;
}

// Tells the season from the clock's reading: as it would be in daylight time, for the switch that ends that, and in
// standard time. A local time that is given is both.
bool IsDaylight(const ZoneRecord& zone, std::uint32_t year, std::int64_t on_daylight_clock,
                std::int64_t on_standard_clock) noexcept {
  const std::int64_t to_standard = SwitchTicks(zone.to_standard, year);
  const std::int64_t to_daylight = SwitchTicks(zone.to_daylight, year);
  const bool before_standard = on_daylight_clock < to_standard;
  const bool after_daylight = on_standard_clock >= to_daylight;
  return to_daylight < to_standard ? before_standard && after_daylight : before_standard || after_daylight;
}

std::int64_t BiasTicks(const ZoneRecord& zone, bool daylight) noexcept {
  const std::int64_t season = daylight ? zone.daylight_bias : zone.standard_bias;
  return (zone.bias + season) * kTicksPerSecond;
}

std::int64_t BiasAtUtc(const ZoneRecord& zone, std::int64_t utc) noexcept {
  if (!HasDaylightTime(zone)) {
    return zone.bias * kTicksPerSecond;
  }
  const std::int64_t standard_bias = BiasTicks(zone, false);
  const std::int64_t daylight_bias = BiasTicks(zone, true);
  CalendarFields standard;
  if (TicksToFields(static_cast<std::uint64_t>(utc - standard_bias), standard) != kSuccess) {
    TicksToFields(static_cast<std::uint64_t>(utc), standard);  // at an end of the scale the year is the same
  }
  return IsDaylight(zone, standard.year, utc - daylight_bias, utc - standard_bias) ? daylight_bias : standard_bias;
}

std::int64_t BiasAtLocal(const ZoneRecord& zone, const CalendarFields& fields, std::int64_t local) noexcept {
  if (!HasDaylightTime(zone)) {
    return zone.bias * kTicksPerSecond;
  }
  return BiasTicks(zone, IsDaylight(zone, fields.year, local, local));
}

ErrorCode Shift(std::int64_t ticks, std::int64_t by, CalendarFields& fields) noexcept {
  // Ticks of valid fields leave room for any valid bias; a negative sum is out of range as an unsigned number.
  return TicksToFields(static_cast<std::uint64_t>(ticks + by), fields);
}

}  // namespace

std::uint64_t CurrentTicks() noexcept {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<std::uint64_t>((now.tv_sec + kUnixEpochSeconds) * kTicksPerSecond + now.tv_nsec / 100);
}

ErrorCode TicksToFields(std::uint64_t ticks, CalendarFields& fields) noexcept {
  if (ticks > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
    return kInvalidParameter;
  }
  SetDate(static_cast<std::uint32_t>(ticks / kTicksPerDay), fields);
  const auto milliseconds = static_cast<std::uint32_t>(ticks % kTicksPerDay / kTicksPerMillisecond);
  fields.hour = static_cast<std::uint16_t>(milliseconds / 3'600'000);
  fields.minute = static_cast<std::uint16_t>(milliseconds / 60'000 % 60);
  fields.second = static_cast<std::uint16_t>(milliseconds / 1'000 % 60);
  fields.milliseconds = static_cast<std::uint16_t>(milliseconds % 1'000);
  return kSuccess;
}

ErrorCode FieldsToTicks(const CalendarFields& fields, std::uint64_t& ticks) noexcept {
  if (fields.year < kFirstYear || fields.year > kLastYear || fields.month < 1 || fields.month > 12 || fields.day < 1 ||
      fields.day > DaysInMonth(fields.year, fields.month) || fields.hour > 23 || fields.minute > 59 ||
      fields.second > 59 || fields.milliseconds > 999) {
    return kInvalidParameter;
  }
  const std::uint64_t days = DaysSinceStart(fields.year, fields.month, fields.day);
  const std::uint64_t seconds = (fields.hour * 60U + fields.minute) * 60U + fields.second;
  ticks = days * kTicksPerDay + (seconds * 1'000U + fields.milliseconds) * kTicksPerMillisecond;
  return kSuccess;
}

ErrorCode UtcToLocal(const ZoneRecord& zone, const CalendarFields& utc, CalendarFields& local) noexcept {
  std::uint64_t ticks = 0;
  if (!IsValidZone(zone) || FieldsToTicks(utc, ticks) != kSuccess) {
    return kInvalidParameter;
  }
  const auto at = static_cast<std::int64_t>(ticks);
  return Shift(at, -BiasAtUtc(zone, at), local);
}

ErrorCode LocalToUtc(const ZoneRecord& zone, const CalendarFields& local, CalendarFields& utc) noexcept {
  std::uint64_t ticks = 0;
  if (!IsValidZone(zone) || FieldsToTicks(local, ticks) != kSuccess) {
    return kInvalidParameter;
  }
  const auto at = static_cast<std::int64_t>(ticks);
  return Shift(at, BiasAtLocal(zone, local, at), utc);
}

ErrorCode UtcToLocal(const CalendarFields& utc, CalendarFields& local) noexcept {
  return UtcToLocal(CurrentZone(), utc, local);
}

ErrorCode LocalToUtc(const CalendarFields& local, CalendarFields& utc) noexcept {
  return LocalToUtc(CurrentZone(), local, utc);
}

std::int64_t CurrentBiasTicks() noexcept {
  return BiasAtUtc(CurrentZone(), static_cast<std::int64_t>(CurrentTicks()));
}

}  // namespace Zelto::Platform
