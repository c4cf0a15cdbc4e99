#include "zelto/time/utc_time.h"

#include "zelto/platform/calendar.h"
#include "zelto/platform/calendar_types.h"
#include "zelto/time/local_flag.h"

#include <bit>
#include <limits>

namespace Zelto::Utilities {
namespace {

constexpr std::int64_t kUnixEpochSeconds = 11'644'473'600;
constexpr std::uint64_t kTicksPerSecond = TimeUnitConverter::TICKS_PER_SECOND;
constexpr std::uint64_t kTicksPerMillisecond = TimeUnitConverter::TICKS_PER_MILLISECOND;
constexpr std::uint64_t kTicksPerDay = TimeUnitConverter::TICKS_PER_DAY;
constexpr std::int64_t kLastSecondOfDay = 86'399;

std::uint64_t TicksOf(const FILETIME& time) noexcept {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

}  // namespace

UtcTime::UtcTime(const FILETIME& time, bool local) {
  SetTime(time, local);
}

UtcTime::UtcTime(const SYSTEMTIME& time, bool local) {
  SetTime(time, local);
}

UtcTime::UtcTime(std::uint16_t year, std::uint16_t month, std::uint16_t day, std::uint16_t hour, std::uint16_t minute,
                 std::uint16_t second, std::uint16_t milliseconds, bool local) {
  SetTime(year, month, day, hour, minute, second, milliseconds, local);
}

UtcTime::UtcTime(std::int64_t unix_seconds, bool local) {
  if (unix_seconds != 0) {
    const auto seconds = static_cast<std::uint64_t>(unix_seconds) + static_cast<std::uint64_t>(kUnixEpochSeconds);
    ticks_ = LocalFlag::StoreTicks(seconds * kTicksPerSecond, local);
  }
}

UtcTime UtcTime::Now() noexcept {
  return FromTicks(Platform::CurrentTicks());
}

void UtcTime::SetTime(const FILETIME& time, bool local) {
  ticks_ = LocalFlag::StoreTicks(TicksOf(time), local);
}

void UtcTime::SetTime(const SYSTEMTIME& time, bool local) {
  ticks_ = LocalFlag::StoreFields(std::bit_cast<Platform::CalendarFields>(time), local);
}

void UtcTime::SetTime(std::uint16_t year, std::uint16_t month, std::uint16_t day, std::uint16_t hour,
                      std::uint16_t minute, std::uint16_t second, std::uint16_t milliseconds, bool local) {
  ticks_ = LocalFlag::StoreFields({year, month, 0, day, hour, minute, second, milliseconds}, local);
}

bool UtcTime::IsValid(std::uint16_t year, std::uint16_t month, std::uint16_t day, std::uint16_t hour,
                      std::uint16_t minute, std::uint16_t second) noexcept {
  std::uint64_t ticks = 0;
  return Platform::FieldsToTicks({year, month, 0, day, hour, minute, second, 0}, ticks) == Platform::kSuccess;
}

void UtcTime::GetTime(std::uint16_t& year, std::uint16_t& month, std::uint16_t& day, std::uint16_t& hour,
                      std::uint16_t& minute, std::uint16_t& second, std::uint16_t& milliseconds, bool local) const {
  const Platform::CalendarFields fields = LocalFlag::HandOutFields(ticks_, local);
  year = fields.year;
  month = fields.month;
  day = fields.day;
  hour = fields.hour;
  minute = fields.minute;
  second = fields.second;
  milliseconds = fields.milliseconds;
}

FILETIME UtcTime::GetFileTime(bool local) const {
  const std::uint64_t ticks = LocalFlag::HandOutTicks(ticks_, local);
  FILETIME time{};
  time.dwLowDateTime = static_cast<std::uint32_t>(ticks);
  time.dwHighDateTime = static_cast<std::uint32_t>(ticks >> 32);
  return time;
}

SYSTEMTIME UtcTime::GetSystemTime(bool local) const {
  return std::bit_cast<SYSTEMTIME>(LocalFlag::HandOutFields(ticks_, local));
}

std::uint16_t UtcTime::GetYear(bool local) const {
  return LocalFlag::HandOutFields(ticks_, local).year;
}

std::uint16_t UtcTime::GetMonth(bool local) const {
  return LocalFlag::HandOutFields(ticks_, local).month;
}

std::uint16_t UtcTime::GetDay(bool local) const {
  return LocalFlag::HandOutFields(ticks_, local).day;
}

std::uint16_t UtcTime::GetHour(bool local) const {
  return LocalFlag::HandOutFields(ticks_, local).hour;
}

std::uint16_t UtcTime::GetMinute(bool local) const {
  return LocalFlag::HandOutFields(ticks_, local).minute;
}

std::uint16_t UtcTime::GetSecond(bool local) const {
  return LocalFlag::HandOutFields(ticks_, local).second;
}

std::uint16_t UtcTime::GetMilliseconds(bool local) const {
  return LocalFlag::HandOutFields(ticks_, local).milliseconds;
}

std::int64_t UtcTime::GetUnixTimestamp(bool local) const {
  return static_cast<std::int64_t>(LocalFlag::HandOutTicks(ticks_, local) / kTicksPerSecond) - kUnixEpochSeconds;
}

std::int64_t UtcTime::GetSecondsUntilMidnight(bool local) const {
  const Platform::CalendarFields fields = LocalFlag::HandOutFields(ticks_, local);
  return kLastSecondOfDay - ((fields.hour * 60 + fields.minute) * 60 + fields.second);
}

UtcTime::FileTimeCompare UtcTime::CompareToFileTime(const FILETIME& time, bool local) const {
  const UtcTime other(time, local);
  if (ticks_ == other.ticks_) {
    return FileTimeCompare::Equal;
  }
  return ticks_ < other.ticks_ ? FileTimeCompare::Before : FileTimeCompare::After;
}

void UtcTime::AddDays(std::int32_t days) noexcept {
  ticks_ += static_cast<std::uint64_t>(std::int64_t{days}) * kTicksPerDay;
}

void UtcTime::AddSeconds(std::uint32_t seconds) noexcept {
  ticks_ += seconds * kTicksPerSecond;
}

void UtcTime::AddMilliseconds(std::uint64_t milliseconds) noexcept {
  ticks_ += milliseconds * kTicksPerMillisecond;
}

void UtcTime::SubDays(std::uint64_t days) noexcept {
  Subtract(days, kTicksPerDay);
}

void UtcTime::SubMilliseconds(std::uint64_t milliseconds) noexcept {
  Subtract(milliseconds, kTicksPerMillisecond);
}

void UtcTime::Subtract(std::uint64_t count, std::uint64_t unit) noexcept {
  // An amount beyond 64 bits is more than any time.
  const bool fits = count <= std::numeric_limits<std::uint64_t>::max() / unit;
  ticks_ = fits && ticks_ > count * unit ? ticks_ - count * unit : 0;
}

}  // namespace Zelto::Utilities
