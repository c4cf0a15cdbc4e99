/// @file
/// Conversion between units of time.
#pragma once

#include <zelto/export.h>

#include <cstdint>

namespace Zelto::Utilities {

/// Units of time, from the smallest. A tick has 100 nanoseconds.
enum class TimeUnit : std::uint32_t {
  Ticks = 0,
  Microseconds = 1,
  Milliseconds = 2,
  Seconds = 3,
  Minutes = 4,
  Hours = 5,
  Days = 6
};

/// Exact conversion between units of time.
class ZELTO_API TimeUnitConverter {
 public:
  TimeUnitConverter() = delete;

  // Not inline: GCC for Windows does not find inline constants of a DLL's class when they are passed by reference.
  static const std::int64_t TICKS_PER_MICROSECOND = 10;
  static const std::int64_t TICKS_PER_MILLISECOND = 10'000;
  static const std::int64_t TICKS_PER_SECOND = 10'000'000;
  static const std::int64_t TICKS_PER_MINUTE = 600'000'000;
  static const std::int64_t TICKS_PER_HOUR = 36'000'000'000;
  static const std::int64_t TICKS_PER_DAY = 864'000'000'000;

  /// Converts a count of one unit into a count of another. To a larger unit the rest is cut off, towards zero.
  ///
  /// @throws std::overflow_error    "Time value is out of range" when the result does not fit
  /// @throws std::invalid_argument  "unknown argument value" for a unit that does not exist
  ///
  /// Example: `Convert(90, TimeUnit::Minutes, TimeUnit::Hours)` is 1.
  static std::int64_t Convert(std::int64_t value, TimeUnit from, TimeUnit to);

  /// `Convert` to and from ticks.
  static std::int64_t ToTicks(std::int64_t value, TimeUnit unit) { return Convert(value, unit, TimeUnit::Ticks); }
  static std::int64_t FromTicks(std::int64_t ticks, TimeUnit unit) { return Convert(ticks, TimeUnit::Ticks, unit); }
};

}  // namespace Zelto::Utilities
