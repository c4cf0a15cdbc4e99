// What the library needs of a system's calendar and zones; the same table for both bodies.
#include "zelto/platform/calendar.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace Zelto::Platform {
namespace {

constexpr std::uint64_t kTicksPerDay = 864'000'000'000;
constexpr std::uint64_t kBeyondScale = std::uint64_t{1} << 63;

CalendarFields At(const char* text) {
  unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, milliseconds = 0;
  std::sscanf(text, "%u-%u-%u %u:%u:%u.%u", &year, &month, &day, &hour, &minute, &second, &milliseconds);
  const auto narrow = [](unsigned value) { return static_cast<std::uint16_t>(value); };
  return {narrow(year),   narrow(month),       0, narrow(day), narrow(hour), narrow(minute),
          narrow(second), narrow(milliseconds)};
}

std::string Text(const CalendarFields& fields) {
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", fields.year, fields.month, fields.day,
                fields.hour, fields.minute, fields.second, fields.milliseconds);
  return text;
}

ZoneSwitch On(int month, int week, int weekday, int hour) {
  return {ZoneSwitch::Form::Weekday, static_cast<std::uint8_t>(month), static_cast<std::uint8_t>(week),
          static_cast<std::uint16_t>(weekday), hour * 3600};
}

const ZoneRecord kNewYork = {5 * 3600, 0, -3600, On(11, 1, 0, 2), On(3, 2, 0, 2)};
const ZoneRecord kBerlin = {-3600, 0, -3600, On(10, 5, 0, 3), On(3, 5, 0, 2)};
const ZoneRecord kAdelaide = {-34'200, 0, -3600, On(4, 1, 0, 3), On(10, 1, 0, 2)};
const ZoneRecord kLordHowe = {-37'800, 0, -1800, On(4, 1, 0, 2), On(10, 1, 0, 2)};
const ZoneRecord kKathmandu = {-20'700, 0, 0, {}, {}};
const ZoneRecord kKiritimati = {-14 * 3600, 0, 0, {}, {}};
const ZoneRecord kBakerIsland = {12 * 3600, 0, 0, {}, {}};
const ZoneRecord kOddStandard = {0, -1800, -5400, On(10, 5, 0, 3), On(3, 5, 0, 2)};

struct ZoneCase {
  const ZoneRecord& zone;
  const char* utc;
  const char* local;
  bool there = true;  // whether this UTC leads to the local time, and
  bool back = true;   // whether the local time leads back to this UTC
};
constexpr bool kNot = false;

TEST(Calendar, ConvertsBetweenUtcAndLocalTimeOfAZone) {
  const ZoneCase cases[] = {
      {kNewYork, "2017-01-15 12:00:00.123", "2017-01-15 07:00:00.123"},
      {kNewYork, "2017-07-15 12:00:00", "2017-07-15 08:00:00"},
      {kNewYork, "2017-03-12 06:59:59.999", "2017-03-12 01:59:59.999"},
      {kNewYork, "2017-03-12 07:00:00", "2017-03-12 03:00:00"},
      {kNewYork, "2017-11-05 04:59:59.999", "2017-11-05 00:59:59.999"},
      {kNewYork, "2017-11-05 05:30:00", "2017-11-05 01:30:00"},
      {kNewYork, "2017-11-05 05:59:59.999", "2017-11-05 01:59:59.999"},
      {kNewYork, "2017-11-05 06:00:00", "2017-11-05 01:00:00", true, kNot},
      {kNewYork, "2017-11-05 07:00:00", "2017-11-05 02:00:00"},
      {kNewYork, "1900-07-04 12:00:00", "1900-07-04 08:00:00"},
      {kNewYork, "1601-01-01 05:00:00", "1601-01-01 00:00:00"},
      {kNewYork, "30827-12-31 23:59:59.999", "30827-12-31 18:59:59.999"},
      {kBerlin, "2020-03-29 00:59:59.999", "2020-03-29 01:59:59.999"},
      {kBerlin, "2020-03-29 01:00:00", "2020-03-29 03:00:00"},
      {kBerlin, "2020-10-25 00:59:59.999", "2020-10-25 02:59:59.999"},
      {kBerlin, "2020-10-25 01:00:00", "2020-10-25 02:00:00", true, kNot},
      {kBerlin, "2020-10-25 02:00:00", "2020-10-25 03:00:00"},
      {kBerlin, "2020-02-28 23:30:00", "2020-02-29 00:30:00"},
      {kAdelaide, "2017-04-01 16:29:59.999", "2017-04-02 02:59:59.999"},
      {kAdelaide, "2017-04-01 16:30:00", "2017-04-02 02:00:00", true, kNot},
      {kAdelaide, "2017-09-30 16:29:59.999", "2017-10-01 01:59:59.999"},
      {kAdelaide, "2017-09-30 16:30:00", "2017-10-01 03:00:00"},
      {kAdelaide, "1965-12-31 13:30:00", "1966-01-01 00:00:00"},
      {kLordHowe, "2017-10-01 01:00:00", "2017-10-01 12:00:00"},
      {kLordHowe, "2017-04-01 14:59:59", "2017-04-02 01:59:59"},
      {kLordHowe, "2017-04-01 15:00:00", "2017-04-02 01:30:00", true, kNot},
      // What the clock leaves out is read as daylight time.
      {kNewYork, "2017-03-12 06:00:00", "2017-03-12 02:00:00", kNot},
      {kAdelaide, "2017-09-30 16:00:00", "2017-10-01 02:30:00", kNot},
      {kKathmandu, "1969-12-31 18:15:00", "1970-01-01 00:00:00"},
      {kKathmandu, "1601-01-01 00:00:00", "1601-01-01 05:45:00"},
      {kKiritimati, "2000-02-28 10:00:00", "2000-02-29 00:00:00"},
      {kBakerIsland, "1900-03-01 11:59:59.999", "1900-02-28 23:59:59.999"},
      {kOddStandard, "2017-01-15 12:00:00", "2017-01-15 12:30:00"},
      {kOddStandard, "2017-07-15 12:00:00", "2017-07-15 13:30:00"},
  };
  for (const ZoneCase& c : cases) {
    CalendarFields fields;
    if (c.there) {
      ASSERT_EQ(UtcToLocal(c.zone, At(c.utc), fields), kSuccess) << c.utc;
      EXPECT_EQ(Text(fields), Text(At(c.local))) << c.utc;
    }
    if (c.back) {
      ASSERT_EQ(LocalToUtc(c.zone, At(c.local), fields), kSuccess) << c.local;
      EXPECT_EQ(Text(fields), Text(At(c.utc))) << c.local;
    }
  }
}

TEST(Calendar, RefusesZonesAndResultsOutOfRange) {
  CalendarFields fields;
  EXPECT_EQ(UtcToLocal(kNewYork, At("1601-01-01 04:59:59"), fields), kInvalidParameter);
  EXPECT_EQ(LocalToUtc(kKathmandu, At("1601-01-01 05:44:59"), fields), kInvalidParameter);
  EXPECT_EQ(UtcToLocal(kBerlin, At("30828-01-01 00:00:00"), fields), kInvalidParameter);
  EXPECT_EQ(LocalToUtc(kBerlin, At("2017-02-29 00:00:00"), fields), kInvalidParameter);
  ZoneRecord half = kBerlin;
  half.to_standard = {};
  EXPECT_EQ(UtcToLocal(half, At("2017-01-01 00:00:00"), fields), kInvalidParameter);
  for (const ZoneSwitch& wrong :
       {On(13, 1, 0, 2), On(0, 1, 0, 2), On(3, 0, 0, 2), On(3, 6, 0, 2), On(3, 1, 7, 2), On(3, 1, 0, 168)}) {
    ZoneRecord zone = kBerlin;
    zone.to_daylight = wrong;
    EXPECT_EQ(UtcToLocal(zone, At("2017-01-01 00:00:00"), fields), kInvalidParameter);
    EXPECT_EQ(LocalToUtc(zone, At("2017-01-01 00:00:00"), fields), kInvalidParameter);
  }
}

TEST(Calendar, SplitsAndJoinsTicks) {
  const struct {
    std::uint64_t ticks;
    const char* text;
    int day_of_week;
  } cases[] = {
      {0, "1601-01-01 00:00:00", 1},
      {59 * kTicksPerDay, "1601-03-01 00:00:00", 4},
      {116'444'736'000'000'000, "1970-01-01 00:00:00", 4},
      {125'961'696'000'000'000, "2000-02-28 00:00:00", 1},
      {125'961'696'000'000'000 + kTicksPerDay, "2000-02-29 00:00:00", 2},
      {131'546'294'961'230'000, "2017-11-08 15:44:56.123", 3},
  };
  for (const auto& c : cases) {
    CalendarFields fields;
    ASSERT_EQ(TicksToFields(c.ticks, fields), kSuccess);
    EXPECT_EQ(Text(fields), Text(At(c.text)));
    EXPECT_EQ(fields.day_of_week, c.day_of_week) << c.text;
    std::uint64_t ticks = 0;
    ASSERT_EQ(FieldsToTicks(At(c.text), ticks), kSuccess);
    EXPECT_EQ(ticks, c.ticks) << c.text;
  }
}

TEST(Calendar, CountsEveryDayOnce) {
  // Each day of the years around every kind of leap rule, and of the last whole year.
  for (const int year : {1601, 1604, 1700, 1900, 1999, 2000, 2100, 2400, 30826}) {
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    const int days[] = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::uint64_t ticks = 0;
    ASSERT_EQ(FieldsToTicks({static_cast<std::uint16_t>(year), 1, 0, 1, 0, 0, 0, 0}, ticks), kSuccess);
    for (int month = 1; month <= 12; ++month) {
      for (int day = 1; day <= days[month - 1]; ++day, ticks += kTicksPerDay) {
        CalendarFields fields;
        std::uint64_t joined = 0;
        ASSERT_EQ(TicksToFields(ticks, fields), kSuccess);
        ASSERT_TRUE(fields.year == year && fields.month == month && fields.day == day) << Text(fields);
        ASSERT_EQ(FieldsToTicks(fields, joined), kSuccess);
        ASSERT_EQ(joined, ticks) << Text(fields);
      }
    }
  }
}

TEST(Calendar, KeepsTheLimitsOfItsScale) {
  CalendarFields fields;
  ASSERT_EQ(TicksToFields(kBeyondScale - 1, fields), kSuccess);
  EXPECT_EQ(Text(fields), "30828-09-14 02:48:05.477");
  EXPECT_EQ(TicksToFields(kBeyondScale, fields), kInvalidParameter);
  EXPECT_EQ(TicksToFields(~std::uint64_t{0}, fields), kInvalidParameter);
  std::uint64_t ticks = 0;
  EXPECT_EQ(FieldsToTicks(At("30827-12-31 23:59:59.999"), ticks), kSuccess);
  for (const char* text : {"1600-12-31 00:00:00", "30828-01-01 00:00:00", "0-1-1 0:0:0", "65535-01-01 00:00:00",
                           "2017-00-01 00:00:00", "2017-13-01 00:00:00", "2017-01-00 00:00:00", "2017-04-31 00:00:00",
                           "2017-02-29 00:00:00", "1900-02-29 00:00:00", "2000-02-30 00:00:00", "2017-01-01 24:00:00",
                           "2017-01-01 00:60:00", "2017-01-01 00:00:60", "2017-01-01 00:00:00.1000"}) {
    EXPECT_EQ(FieldsToTicks(At(text), ticks), kInvalidParameter) << text;
  }
}

}  // namespace
}  // namespace Zelto::Platform
