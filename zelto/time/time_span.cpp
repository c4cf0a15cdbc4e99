#include "zelto/time/time_span.h"

#include <limits>
#include <stdexcept>

namespace Zelto::Utilities {
namespace {

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();

void Require(bool fits) {
  if (!fits) {
    throw std::overflow_error("Time span is out of range");
  }
}

}  // namespace

std::int64_t TimeSpan::GetTotalDays() const noexcept {
  return ticks_ / TimeUnitConverter::TICKS_PER_DAY;
}

std::int64_t TimeSpan::GetTotalHours() const noexcept {
  return ticks_ / TimeUnitConverter::TICKS_PER_HOUR;
}

std::int64_t TimeSpan::GetTotalMinutes() const noexcept {
  return ticks_ / TimeUnitConverter::TICKS_PER_MINUTE;
}

std::int64_t TimeSpan::GetTotalSeconds() const noexcept {
  return ticks_ / TimeUnitConverter::TICKS_PER_SECOND;
}

std::int64_t TimeSpan::GetTotalMilliseconds() const noexcept {
  return ticks_ / TimeUnitConverter::TICKS_PER_MILLISECOND;
}

TimeSpan& TimeSpan::operator+=(TimeSpan other) {
  Require(other.ticks_ >= 0 ? ticks_ <= kHighest - other.ticks_ : ticks_ >= kLowest - other.ticks_);
  ticks_ += other.ticks_;
  return *this;
}

TimeSpan& TimeSpan::operator-=(TimeSpan other) {
  Require(other.ticks_ >= 0 ? ticks_ >= kLowest + other.ticks_ : ticks_ <= kHighest + other.ticks_);
  ticks_ -= other.ticks_;
  return *this;
}

}  // namespace Zelto::Utilities
