#include "zelto/time/utc_time.h"

#include "zelto/platform/calendar_types.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <limits>
#include <string>

namespace Zelto::Utilities {
namespace {

using testing::HasSubstr;
using testing::Property;

constexpr std::uint64_t kUnixEpochTicks = 116'444'736'000'000'000;
constexpr std::uint64_t kTicksPerDay = 864'000'000'000;

auto Fails(const std::string& text) {
  return testing::Throws<Win32Exception>(
      AllOf(Property(&Win32Exception::what, HasSubstr(text)), Property(&Win32Exception::GetErrorCode, 87U)));
}

TEST(UtcTime, CountsUnixSeconds) {
  EXPECT_TRUE(UtcTime(0, false).IsEmpty());
  EXPECT_EQ(UtcTime(1, false).GetTime(), kUnixEpochTicks + 10'000'000);
  for (const std::int64_t seconds : {1LL, -1LL, 1'510'155'896LL, -11'644'473'599LL, 910'692'730'085LL}) {
    EXPECT_EQ(UtcTime(seconds, false).GetUnixTimestamp(false), seconds);
  }
  EXPECT_EQ(UtcTime().GetUnixTimestamp(false), -11'644'473'600);
  EXPECT_EQ(UtcTime::FromTicks(kUnixEpochTicks - 1).GetUnixTimestamp(false), -1);
  const std::int64_t before_scale = -11'644'473'601;
  EXPECT_THAT([&] { UtcTime(before_scale, true); }, Fails("Can't convert file time to system time"));
}

TEST(UtcTime, TakesAndGivesCalendarFields) {
  const UtcTime time(2016, 2, 29, 23, 59, 58, 7, false);
  const SYSTEMTIME fields = time.GetSystemTime(false);
  EXPECT_EQ(fields.wDayOfWeek, 1);
  EXPECT_EQ(UtcTime(fields, false), time);
  EXPECT_EQ(UtcTime(time.GetFileTime(false), false), time);
  std::uint16_t year, month, day, hour, minute, second, milliseconds;
  time.GetTime(year, month, day, hour, minute, second, milliseconds, false);
  EXPECT_EQ(UtcTime(year, month, day, hour, minute, second, milliseconds, false), time);
  EXPECT_EQ(time.GetYear(false), 2016);
  EXPECT_EQ(time.GetMonth(false), 2);
  EXPECT_EQ(time.GetDay(false), 29);
  EXPECT_EQ(time.GetHour(false), 23);
  EXPECT_EQ(time.GetMinute(false), 59);
  EXPECT_EQ(time.GetSecond(false), 58);
  EXPECT_EQ(time.GetMilliseconds(false), 7);
  EXPECT_EQ(time.GetSecondsUntilMidnight(false), 1);
}

TEST(UtcTime, RefusesWhatTheCalendarDoesNotHave) {
  EXPECT_TRUE(UtcTime::IsValid(2016, 2, 29, 23, 59, 59));
  EXPECT_TRUE(UtcTime::IsValid(30827, 12, 31, 0, 0, 0));
  for (const bool local : {false, true}) {
    EXPECT_THAT([&] { UtcTime(2017, 2, 29, 0, 0, 0, 0, local); }, Fails("Can't convert system time to file time"));
  }
  EXPECT_FALSE(UtcTime::IsValid(2017, 2, 29, 0, 0, 0));
  EXPECT_FALSE(UtcTime::IsValid(2017, 1, 1, 24, 0, 0));
  UtcTime time(2017, 1, 1, 0, 0, 0, 0, false);
  const UtcTime before = time;
  EXPECT_THROW(time.SetTime(2017, 1, 1, 0, 0, 60, 0, false), Win32Exception);
  EXPECT_EQ(time, before);
  const UtcTime beyond = UtcTime::FromTicks(std::uint64_t{1} << 63);
  EXPECT_EQ(beyond.GetFileTime(false).dwHighDateTime, 0x80000000U);
  EXPECT_THAT([&] { beyond.GetYear(false); }, Fails("Can't convert file time to system time"));
}

TEST(UtcTime, AddsWithoutGuardAndSubtractsDownToEmpty) {
  const UtcTime start(2017, 3, 1, 0, 0, 0, 0, false);
  UtcTime time = start;
  time.AddDays(-1);
  EXPECT_EQ(time, UtcTime(2017, 2, 28, 0, 0, 0, 0, false));
  time.AddSeconds(std::numeric_limits<std::uint32_t>::max());
  time.AddMilliseconds(1'000);
  EXPECT_EQ((time - start).GetTotalSeconds(), (std::int64_t{1} << 32) - 86'400);
  time = UtcTime::FromTicks(5);
  time.AddDays(std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(time.GetTime(), 5 - (std::uint64_t{1} << 31) * kTicksPerDay);

  time = UtcTime::FromTicks(2 * kTicksPerDay + 1);
  time.SubDays(2);
  EXPECT_EQ(time.GetTime(), 1U);
  const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  for (const std::uint64_t days : {std::uint64_t{2}, std::uint64_t{3}, most / kTicksPerDay + 1, most}) {
    time = UtcTime::FromTicks(2 * kTicksPerDay);
    time.SubDays(days);
    EXPECT_TRUE(time.IsEmpty()) << days;
  }
  for (const std::uint64_t milliseconds : {std::uint64_t{3}, std::uint64_t{4}, most / 10'000 + 1, most}) {
    time = UtcTime::FromTicks(30'000);
    time.SubMilliseconds(milliseconds);
    EXPECT_TRUE(time.IsEmpty()) << milliseconds;
  }
}

TEST(UtcTime, ComparesByTicks) {
  const UtcTime early = UtcTime::FromTicks(7);
  const UtcTime late = UtcTime::FromTicks(std::uint64_t{1} << 63);
  EXPECT_TRUE(early < late && late > early && early <= early && early >= early && early != late);
  EXPECT_EQ((early - UtcTime::FromTicks(9)).GetTicks(), -2);
  EXPECT_EQ(early.CompareToFileTime(late.GetFileTime(false), false), UtcTime::FileTimeCompare::Before);
  EXPECT_EQ(late.CompareToFileTime(late.GetFileTime(false), false), UtcTime::FileTimeCompare::Equal);
}

TEST(UtcTime, KnowsTheCurrentTime) {
  const std::int64_t before = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  EXPECT_LE(std::abs(UtcTime::Now().GetUnixTimestamp(false) - before), 60);
}

}  // namespace
}  // namespace Zelto::Utilities
