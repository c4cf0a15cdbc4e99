// How evenly timers tick, beside a bare loop on a timerfd: ticks of 10 ms, in turns of 20.
#include "bench/support/interleaved.h"
#include "zelto/threading/timer.h"
#include "zelto/threading/timer_thread.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

namespace Zelto::Bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kTurns = 51;
constexpr std::size_t kTicksPerTurn = 20;
constexpr int kIntervalMs = 10;

/// The times of one turn's ticks.
class Ticks {
 public:
  void Add() {
    const std::lock_guard lock(lock_);
    times_.push_back(Clock::now());
    if (IsFull()) {
      full_.notify_one();
    }
  }
  void Wait() {
    std::unique_lock lock(lock_);
    full_.wait(lock, [this] { return IsFull(); });
  }
  /// How far each time from one tick to the next is from the interval, in nanoseconds: the median.
  double MedianJitter() {
    const std::lock_guard lock(lock_);
    std::vector<double> jitter;
    for (std::size_t i = 1; i <= kTicksPerTurn; ++i) {
      const std::chrono::duration<double, std::nano> apart = times_[i] - times_[i - 1];
      jitter.push_back(std::abs(apart.count() - kIntervalMs * 1e6));
    }
    return QuartilesOf(std::move(jitter)).median;
  }

 private:
  bool IsFull() const { return times_.size() > kTicksPerTurn; }

  std::mutex lock_;
  std::condition_variable full_;
  std::vector<Clock::time_point> times_;
};

void RunTimer(Ticks& ticks) {
  Utilities::Timer timer(kIntervalMs, false, [&] { ticks.Add(); });
  ticks.Wait();
}

void RunTimerThread(Ticks& ticks) {
  Utilities::TimerThread timer([&] { ticks.Add(); }, kIntervalMs);
  timer.Start();
  ticks.Wait();
}

void RunTimerDescriptor(Ticks& ticks) {
  const int timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
  const timespec interval{0, kIntervalMs * 1'000'000};
  const itimerspec beat{interval, interval};
  ::timerfd_settime(timer, 0, &beat, nullptr);
  std::uint64_t expired = 0;
  for (std::size_t i = 0; i <= kTicksPerTurn; ++i) {
    if (::read(timer, &expired, sizeof expired) == sizeof expired) {
      ticks.Add();
    }
  }
  ::close(timer);
}

double JitterOf(void (*run)(Ticks&)) {
  Ticks ticks;
  run(ticks);
  return ticks.MedianJitter();
}

void CompareJitter(const char* what, void (*ours)(Ticks&)) {
  std::vector<double> our_jitter, bare_jitter, ratios;
  for (int turn = 0; turn < kTurns; ++turn) {
    our_jitter.push_back(JitterOf(ours));
    bare_jitter.push_back(JitterOf(RunTimerDescriptor));
    ratios.push_back(bare_jitter.back() / our_jitter.back());
  }
  Print(what, "timerfd loop", {QuartilesOf(our_jitter), QuartilesOf(bare_jitter), QuartilesOf(ratios)});
}

}  // namespace
}  // namespace Zelto::Bench

int main() {
  Zelto::Bench::CompareJitter("jitter of a Timer's tick", Zelto::Bench::RunTimer);
  Zelto::Bench::CompareJitter("jitter of a TimerThread's tick", Zelto::Bench::RunTimerThread);
}
