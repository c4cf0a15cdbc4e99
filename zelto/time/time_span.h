/// @file
/// The difference of two times.
#pragma once

#include <zelto/export.h>
#include <zelto/time/time_unit_converter.h>

#include <compare>
#include <cstdint>

namespace Zelto::Utilities {

/// A signed count of ticks of 100 nanoseconds, the scale of `UtcTime`. 64 bits reach some 29,000 years to either side.
///
/// The totals are whole units, cut towards zero: 90 minutes have `GetTotalHours()` 1, minus 90 minutes have -1. Sums
/// and differences that do not fit throw `std::overflow_error` "Time span is out of range" and change nothing.
class ZELTO_API TimeSpan {
 public:
  /// No time at all.
  constexpr TimeSpan() noexcept = default;
  constexpr explicit TimeSpan(std::int64_t ticks) noexcept : ticks_(ticks) {}

  /// @throws std::overflow_error  "Time value is out of range" when the ticks do not fit
  static TimeSpan From(std::int64_t value, TimeUnit unit) { return TimeSpan(TimeUnitConverter::ToTicks(value, unit)); }

  constexpr std::int64_t GetTicks() const noexcept { return ticks_; }
  std::int64_t GetTotalDays() const noexcept;
  std::int64_t GetTotalHours() const noexcept;
  std::int64_t GetTotalMinutes() const noexcept;
  std::int64_t GetTotalSeconds() const noexcept;
  std::int64_t GetTotalMilliseconds() const noexcept;

  TimeSpan& operator+=(TimeSpan other);
  TimeSpan& operator-=(TimeSpan other);
  TimeSpan operator-() const { return TimeSpan() - *this; }
  friend TimeSpan operator+(TimeSpan a, TimeSpan b) { return a += b; }
  friend TimeSpan operator-(TimeSpan a, TimeSpan b) { return a -= b; }
  friend constexpr auto operator<=>(TimeSpan, TimeSpan) noexcept = default;

 private:
  std::int64_t ticks_ = 0;
};

}  // namespace Zelto::Utilities
