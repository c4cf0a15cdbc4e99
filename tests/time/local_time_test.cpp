// Local time in the zone of this process: run once for each zone that `TZ` names.
#include "zelto/platform/calendar_types.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/time/utc_time.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace Zelto::Utilities {
namespace {

using Form = UtcTime::StringValue;

std::string Zone() {
  const char* zone = std::getenv("TZ");
  return zone == nullptr ? "" : zone;
}

TEST(LocalTime, FollowsTodaysRulesOfTheZoneInEveryYear) {
  const struct {
    std::string_view zone;
    const wchar_t* utc;
    const wchar_t* local;
    bool back = true;
  } cases[] = {
      {"UTC", L"2017-11-08T15:44:56", L"2017-11-08T15:44:56"},
      {"America/New_York", L"2017-11-08T15:44:56", L"2017-11-08T10:44:56"},
      {"America/New_York", L"2017-11-05T06:30:00", L"2017-11-05T01:30:00", false},
      {"America/New_York", L"2018-03-11T07:00:00", L"2018-03-11T03:00:00"},
      {"America/New_York", L"1900-07-04T12:00:00", L"1900-07-04T08:00:00"},
      {"America/New_York", L"1601-01-01T05:00:01", L"1601-01-01T00:00:01"},
      {"Asia/Kolkata", L"2017-11-08T15:44:56", L"2017-11-08T21:14:56"},
      {"Asia/Kolkata", L"1605-02-28T18:30:00", L"1605-03-01T00:00:00"},
      {"Australia/Adelaide", L"2017-11-08T15:44:56", L"2017-11-09T02:14:56"},
      {"Australia/Adelaide", L"2017-06-30T15:44:56", L"2017-07-01T01:14:56"},
      {"Australia/Adelaide", L"1850-01-01T00:00:00", L"1850-01-01T10:30:00"},
      {"Europe/Berlin", L"2017-11-08T15:44:56", L"2017-11-08T16:44:56"},
      {"Europe/Berlin", L"2017-07-08T15:44:56", L"2017-07-08T17:44:56"},
      {"Europe/Berlin", L"1969-07-20T20:17:40", L"1969-07-20T22:17:40"},
      {"Europe/Berlin", L"30827-07-01T00:00:00", L"30827-07-01T02:00:00", false},
  };
  int tried = 0;
  for (const auto& c : cases) {
    if (c.zone != Zone()) {
      continue;
    }
    ++tried;
    // Years of five digits are printed and not read.
    const UtcTime time =
        c.utc[4] == L'-' ? UtcTime(c.utc, Form::ISO8601, false) : UtcTime(30827, 7, 1, 0, 0, 0, 0, false);
    EXPECT_EQ(time.ToString(Form::ISO8601, true), c.local);
    if (c.back) {
      EXPECT_EQ(UtcTime(c.local, Form::DateTime, true).ToString(Form::ISO8601, false), c.utc);
    }
  }
  EXPECT_GT(tried, 0) << "no case for the zone " << Zone();
}

TEST(LocalTime, CutsToMillisecondsOnTheLocalWayOnly) {
  const UtcTime time = UtcTime::FromTicks(131'546'294'961'239'999);
  const FILETIME plain = time.GetFileTime(false);
  EXPECT_EQ(UtcTime(plain, false), time);
  const UtcTime back(time.GetFileTime(true), true);
  EXPECT_EQ(back.GetTime(), 131'546'294'961'230'000U);
  EXPECT_EQ(time.CompareToFileTime(time.GetFileTime(true), true), UtcTime::FileTimeCompare::After);
  EXPECT_EQ(back.CompareToFileTime(time.GetFileTime(true), true), UtcTime::FileTimeCompare::Equal);
}

TEST(LocalTime, CountsSecondsAndFieldsInLocalTime) {
  const UtcTime time(2017, 11, 8, 15, 44, 56, 789, false);
  const std::int64_t offset = time.GetUnixTimestamp(true) - time.GetUnixTimestamp(false);
  const SYSTEMTIME local = time.GetSystemTime(true);
  EXPECT_EQ(time.GetSecondsUntilMidnight(true), 86'399 - (local.wHour * 3600 + local.wMinute * 60 + local.wSecond));
  EXPECT_EQ(UtcTime(local, true), time);
  EXPECT_EQ(UtcTime(time.GetUnixTimestamp(true), true), UtcTime(time.GetUnixTimestamp(false), false));
  EXPECT_EQ(time.GetHour(true), local.wHour);
  EXPECT_EQ((time.GetHour(true) * 60 + time.GetMinute(true) + 1440 - offset / 60) % 1440, 15 * 60 + 44);
}

TEST(LocalTime, IsEmptyBeforeTheScaleAndThrowsBeyondIt) {
  const std::int64_t offset = UtcTime(2017, 1, 1, 12, 0, 0, 0, false).GetUnixTimestamp(true) -
                              UtcTime(2017, 1, 1, 12, 0, 0, 0, false).GetUnixTimestamp(false);
  const UtcTime start(1601, 1, 1, 0, 0, 0, 0, true);
  if (offset > 0) {
    EXPECT_TRUE(start.IsEmpty());
    EXPECT_TRUE(UtcTime(1601, 1, 1, 0, 30, 0, 0, true).IsEmpty());
    EXPECT_EQ(UtcTime(L"0000000000000001", Form::Hex, true).GetTime(), 0U);
    EXPECT_EQ(UtcTime().GetYear(true), 1601);
  } else {
    EXPECT_EQ(start.GetTime(), static_cast<std::uint64_t>(-offset) * 10'000'000U);
  }
  if (offset < 0) {
    EXPECT_THROW(UtcTime().GetFileTime(true), Win32Exception);
  }
  // Fields of the year 30828 can be split off ticks but not be converted.
  const UtcTime last = UtcTime::FromTicks((std::uint64_t{1} << 63) - 1);
  EXPECT_EQ(last.GetYear(false), 30'828);
  EXPECT_THROW(last.GetYear(true), Win32Exception);
  EXPECT_THROW(UtcTime(last.GetFileTime(false), true), Win32Exception);
}

}  // namespace
}  // namespace Zelto::Utilities
