/// @file
/// How much faster than a peer: the ratio of two operations that are timed in turns.
#pragma once

#include "bench/support/report.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace Zelto::Bench {

/// Keeps the compiler from dropping what a value was computed for.
template <typename T>
inline void Keep(const T& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

/// The processor time that the calling thread has used: the clock for what only computes, since what else the machine
/// does stops it, too. Models `std::chrono`'s clocks as far as `TimeCalls` needs it.
struct ThreadClock {
  using time_point = std::chrono::time_point<ThreadClock, std::chrono::nanoseconds>;
  using duration = time_point::duration;
  static time_point now() noexcept {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time_point(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
  }
};

/// The time of `calls` calls, in nanoseconds per call.
template <typename Clock, typename Operation>
double TimeCalls(Operation& operation, std::size_t calls) {
  const auto start = Clock::now();
  for (std::size_t i = 0; i < calls; ++i) {
    operation();
  }
  const std::chrono::duration<double, std::nano> elapsed = Clock::now() - start;
  return elapsed.count() / static_cast<double>(calls);
}

/// Times two operations in turns, so that what else the machine does meets both. Each measurement repeats its operation
/// for at least `batch_ns`, which is short beside a scheduler's turn; which of the two goes first changes from pair to
/// pair. `Clock` is the one on the wall, or `ThreadClock`.
template <typename Clock = std::chrono::steady_clock, typename Ours, typename Peer>
Comparison Compare(Ours&& ours, Peer&& peer, std::size_t pairs = 151, double batch_ns = 1e5) {
  const auto calls_for = [batch_ns](auto& operation) {
    const double once = std::max(TimeCalls<Clock>(operation, 1), 1.0);
    const double warm = std::max(TimeCalls<Clock>(operation, static_cast<std::size_t>(batch_ns / once) + 1), 1.0);
    return static_cast<std::size_t>(batch_ns / warm) + 1;
  };
  const std::size_t our_calls = calls_for(ours);
  const std::size_t peer_calls = calls_for(peer);
  std::vector<double> our_times, peer_times, ratios;
  for (std::size_t pair = 0; pair < pairs; ++pair) {
    double our_time = 0;
    double peer_time = 0;
    if (pair % 2 == 0) {
      our_time = TimeCalls<Clock>(ours, our_calls);
      peer_time = TimeCalls<Clock>(peer, peer_calls);
    } else {
      peer_time = TimeCalls<Clock>(peer, peer_calls);
      our_time = TimeCalls<Clock>(ours, our_calls);
    }
    our_times.push_back(our_time);
    peer_times.push_back(peer_time);
    ratios.push_back(peer_time / our_time);
  }
  return {QuartilesOf(our_times), QuartilesOf(peer_times), QuartilesOf(ratios)};
}

/// `Compare` for operations that neither wait nor use other threads.
template <typename Ours, typename Peer>
Comparison CompareComputing(Ours&& ours, Peer&& peer) {
  return Compare<ThreadClock>(ours, peer);
}

}  // namespace Zelto::Bench
