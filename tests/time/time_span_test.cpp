#include "zelto/time/time_span.h"

#include "zelto/time/stopwatch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <stdexcept>
#include <thread>

namespace Zelto::Utilities {
namespace {

using enum TimeUnit;

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();

TEST(TimeSpan, CutsItsTotalsTowardsZero) {
  for (const int sign : {1, -1}) {
    const TimeSpan span = TimeSpan::From(sign * 90'061, Seconds) + TimeSpan(sign * 29'999);
    EXPECT_EQ(span.GetTotalDays(), sign * 1);
    EXPECT_EQ(span.GetTotalHours(), sign * 25);
    EXPECT_EQ(span.GetTotalMinutes(), sign * 1'501);
    EXPECT_EQ(span.GetTotalSeconds(), sign * 90'061);
    EXPECT_EQ(span.GetTotalMilliseconds(), sign * 90'061'002);
    EXPECT_EQ(span.GetTicks(), sign * 900'610'029'999);
  }
}

TEST(TimeSpan, ThrowsInsteadOfWrapping) {
  TimeSpan span(kHighest);
  EXPECT_THROW(span += TimeSpan(1), std::overflow_error);
  EXPECT_THROW(span -= TimeSpan(-1), std::overflow_error);
  EXPECT_EQ(span.GetTicks(), kHighest);
  EXPECT_EQ((span += TimeSpan(kLowest)).GetTicks(), -1);
  EXPECT_EQ((span -= TimeSpan(kLowest)).GetTicks(), kHighest);
  EXPECT_THROW(-TimeSpan(kLowest), std::overflow_error);
  EXPECT_THROW(TimeSpan(kLowest) - TimeSpan(1), std::overflow_error);
  EXPECT_EQ((-span).GetTicks(), kLowest + 1);
  EXPECT_TRUE(TimeSpan(-1) < TimeSpan() && TimeSpan(2) >= TimeSpan(2) && TimeSpan(1) != TimeSpan());
}

TEST(TimeUnitConverter, ConvertsExactlyOrThrows) {
  EXPECT_EQ(TimeUnitConverter::Convert(1, Days, Ticks), 864'000'000'000);
  EXPECT_EQ(TimeUnitConverter::Convert(-1, Hours, Milliseconds), -3'600'000);
  EXPECT_EQ(TimeUnitConverter::Convert(90, Minutes, Hours), 1);
  EXPECT_EQ(TimeUnitConverter::Convert(-90, Minutes, Hours), -1);
  EXPECT_EQ(TimeUnitConverter::Convert(19, Ticks, Microseconds), 1);
  EXPECT_EQ(TimeUnitConverter::Convert(kHighest, Days, Days), kHighest);
  EXPECT_EQ(TimeUnitConverter::Convert(kHighest, Seconds, Minutes), kHighest / 60);
  EXPECT_EQ(TimeUnitConverter::Convert(kHighest / 24, Days, Hours), kHighest / 24 * 24);
  EXPECT_EQ(TimeUnitConverter::Convert(kLowest / 1000, Seconds, Milliseconds), kLowest / 1000 * 1000);
  EXPECT_THROW(TimeUnitConverter::Convert(kHighest / 24 + 1, Days, Hours), std::overflow_error);
  EXPECT_THROW(TimeUnitConverter::ToTicks(kLowest / 10 - 1, Microseconds), std::overflow_error);
  EXPECT_THROW(TimeUnitConverter::FromTicks(1, TimeUnit{7}), std::invalid_argument);
}

TEST(Stopwatch, AddsUpOnlyWhileItRuns) {
  using Clock = std::chrono::steady_clock;
  const auto pass = [](int milliseconds) {
    for (const auto until = Clock::now() + std::chrono::milliseconds(milliseconds); Clock::now() < until;) {
      std::this_thread::yield();
    }
  };
  const Clock::time_point begin = Clock::now();
  Stopwatch stopwatch = Stopwatch::StartNew();
  pass(2);
  stopwatch.Stop();
  const Clock::duration most = Clock::now() - begin;
  const TimeSpan first = stopwatch.GetElapsed();
  EXPECT_GE(first.GetTotalMilliseconds(), 2);
  EXPECT_LE(first.GetTicks(), std::chrono::nanoseconds(most).count() / 100 + 1);
  pass(1);
  EXPECT_EQ(stopwatch.GetElapsed(), first);
  stopwatch.Start();
  pass(1);
  const TimeSpan longest = stopwatch.GetElapsed();
  EXPECT_GE(longest - first, TimeSpan::From(1, Milliseconds));
  stopwatch.Restart();
  stopwatch.Stop();
  EXPECT_LT(stopwatch.GetElapsed(), longest);
  stopwatch.Reset();
  EXPECT_FALSE(stopwatch.IsRunning());
  EXPECT_EQ(stopwatch.GetElapsed(), TimeSpan());
}

}  // namespace
}  // namespace Zelto::Utilities
