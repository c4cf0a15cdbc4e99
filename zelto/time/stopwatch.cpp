#include "zelto/time/stopwatch.h"

#include <cstdint>
#include <ratio>

namespace Zelto::Utilities {

Stopwatch Stopwatch::StartNew() noexcept {
  Stopwatch stopwatch;
  stopwatch.Start();
  return stopwatch;
}

void Stopwatch::Start() noexcept {
  if (!running_) {
    started_ = Clock::now();
    running_ = true;
  }
}

void Stopwatch::Stop() noexcept {
  if (running_) {
    elapsed_ += Clock::now() - started_;
    running_ = false;
  }
}

void Stopwatch::Reset() noexcept {
  *this = Stopwatch();
}

void Stopwatch::Restart() noexcept {
  Reset();
  Start();
}

TimeSpan Stopwatch::GetElapsed() const noexcept {
  using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, TimeUnitConverter::TICKS_PER_SECOND>>;
  const Clock::duration running = running_ ? Clock::now() - started_ : Clock::duration::zero();
  return TimeSpan(std::chrono::duration_cast<Ticks>(elapsed_ + running).count());
}

}  // namespace Zelto::Utilities
