#include "zelto/time/time_unit_converter.h"

#include <limits>
#include <stdexcept>

namespace Zelto::Utilities {
namespace {

std::int64_t TicksPer(TimeUnit unit) {
  switch (unit) {
    case TimeUnit::Ticks:
      return 1;
    case TimeUnit::Microseconds:
      return TimeUnitConverter::TICKS_PER_MICROSECOND;
    case TimeUnit::Milliseconds:
      return TimeUnitConverter::TICKS_PER_MILLISECOND;
    case TimeUnit::Seconds:
      return TimeUnitConverter::TICKS_PER_SECOND;
    case TimeUnit::Minutes:
      return TimeUnitConverter::TICKS_PER_MINUTE;
    case TimeUnit::Hours:
      return TimeUnitConverter::TICKS_PER_HOUR;
    case TimeUnit::Days:
      return TimeUnitConverter::TICKS_PER_DAY;
  }
  throw std::invalid_argument("unknown argument value");
}

}  // namespace

const std::int64_t TimeUnitConverter::TICKS_PER_MICROSECOND;
const std::int64_t TimeUnitConverter::TICKS_PER_MILLISECOND;
const std::int64_t TimeUnitConverter::TICKS_PER_SECOND;
const std::int64_t TimeUnitConverter::TICKS_PER_MINUTE;
const std::int64_t TimeUnitConverter::TICKS_PER_HOUR;
const std::int64_t TimeUnitConverter::TICKS_PER_DAY;

std::int64_t TimeUnitConverter::Convert(std::int64_t value, TimeUnit from, TimeUnit to) {
  const std::int64_t per_from = TicksPer(from);
  const std::int64_t per_to = TicksPer(to);
  // Each unit is a whole number of every smaller one, so one factor is enough and no product passes through ticks.
  if (per_from <= per_to) {
    return value / (per_to / per_from);
  }
  const std::int64_t factor = per_from / per_to;
  if (value > std::numeric_limits<std::int64_t>::max() / factor ||
      value < std::numeric_limits<std::int64_t>::min() / factor) {
    throw std::overflow_error("Time value is out of range");
  }
  return value * factor;
}

}  // namespace Zelto::Utilities
