// How evenly timers tick, beside a bare loop on a timerfd: 1,000 ticks of 10 ms each, in turns of 100.
#include "bench/support/interleaved.h"
#include "zelto/threading/timer.h"
#include "zelto/threading/timer_thread.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <mutex>
#include <vector>

namespace Zelto::Bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kTurns = 10;
constexpr std::size_t kTicksPerTurn = 100;
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
  /// How far each time from one tick to the next is from the interval, in microseconds.
  void AppendJitter(std::vector<double>& jitter) {
    const std::lock_guard lock(lock_);
    for (std::size_t i = 1; i <= kTicksPerTurn; ++i) {
      const std::chrono::duration<double, std::micro> apart = times_[i] - times_[i - 1];
      jitter.push_back(std::abs(apart.count() - kIntervalMs * 1000.0));
    }
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

void Run() {
  struct Contender {
    const char* name;
    std::function<void(Ticks&)> run;
    std::vector<double> jitter;
  };
  Contender contenders[] = {
      {"Timer", RunTimer, {}}, {"TimerThread", RunTimerThread, {}}, {"bare timerfd loop", RunTimerDescriptor, {}}};
  for (int turn = 0; turn < kTurns; ++turn) {
    for (Contender& contender : contenders) {
      Ticks ticks;
      contender.run(ticks);
      ticks.AppendJitter(contender.jitter);
    }
  }
  std::printf("distance of a tick from 10 ms after the one before, microseconds\n");
  for (Contender& contender : contenders) {
    std::sort(contender.jitter.begin(), contender.jitter.end());
    const Quartiles quartiles = QuartilesOf(contender.jitter);
    std::printf("%-20s median %8.1f  quartiles %8.1f to %8.1f  99 of 100 within %8.1f  worst %9.1f\n", contender.name,
                quartiles.median, quartiles.lower, quartiles.upper,
                contender.jitter[contender.jitter.size() * 99 / 100], contender.jitter.back());
  }
}

}  // namespace
}  // namespace Zelto::Bench

int main() {
  Zelto::Bench::Run();
}
