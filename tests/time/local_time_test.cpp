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
      {"America/New_York", L"1900-07-04T12:00:00", L"1900-07-04T08:00:00"},
      {"Asia/Kolkata", L"1605-02-28T18:30:00", L"1605-03-01T00:00:00"},
      {"Australia/Adelaide", L"2017-11-08T15:44:56", L"2017-11-09T02:14:56"},
      {"Australia/Adelaide", L"2017-06-30T15:44:56", L"2017-07-01T01:14:56"},
      {"Europe/Berlin", L"2017-11-08T15:44:56", L"2017-11-08T16:44:56"},
      {"Europe/Berlin", L"2017-07-08T15:44:56", L"2017-07-08T17:44:56"},
      {"Europe/Berlin", L"30827-07-01T00:00:00", L"30827-07-01T02:00:00", false},
  };
  const char* const zone = std::getenv("TZ");
  ASSERT_NE(zone, nullptr);
  int tried = 0;
  for (const auto& c : cases) {
    if (c.zone != zone) {
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
  EXPECT_GT(tried, 0) << "no case for the zone " << zone;
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
  const UtcTime winter(2017, 1, 1, 12, 0, 0, 0, false);
  const std::int64_t offset = winter.GetUnixTimestamp(true) - winter.GetUnixTimestamp(false);
  if (offset > 0) {
    EXPECT_TRUE(UtcTime(1601, 1, 1, 0, 30, 0, 0, true).IsEmpty());
    EXPECT_EQ(UtcTime(L"0000000000000001", Form::Hex, true).GetTime(), 0U);
    EXPECT_EQ(UtcTime().GetYear(true), 1601);
  } else {
    EXPECT_EQ(UtcTime(1601, 1, 1, 0, 0, 0, 0, true).GetTime(), static_cast<std::uint64_t>(-offset) * 10'000'000U);
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
