/// @file
/// How much faster than a peer: the ratio of two operations that are timed in turns.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <vector>

namespace Zelto::Bench {

/// The middle half of some measurements.
struct Quartiles {
  double lower;
  double median;
  double upper;
};

/// Consumes the values.
inline Quartiles QuartilesOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const auto at = [&values](std::size_t quarter) { return values[(values.size() - 1) * quarter / 4]; };
  return {at(1), at(2), at(3)};
}

/// Keeps the compiler from dropping what a value was computed for.
template <typename T>
inline void Keep(const T& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

/// Two operations side by side; the times are per call.
struct Comparison {
  Quartiles ours_ns;
  Quartiles peer_ns;
  Quartiles ratio;  ///< the peer's time divided by ours, pair by pair: above 1 we are faster
};

/// The time of `calls` calls, in nanoseconds per call.
template <typename Operation>
double TimeCalls(Operation& operation, std::size_t calls) {
  const auto start = std::chrono::steady_clock::now();
  for (std::size_t i = 0; i < calls; ++i) {
    operation();
  }
  const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
  return elapsed.count() / static_cast<double>(calls);
}

/// Times two operations in turns, so that what else the machine does meets both. Each measurement repeats its operation
/// for at least `batch_ns`, which is short beside a scheduler's turn; which of the two goes first changes from pair to
/// pair.
template <typename Ours, typename Peer>
Comparison Compare(Ours&& ours, Peer&& peer, std::size_t pairs = 151, double batch_ns = 1e5) {
  const auto calls_for = [batch_ns](auto& operation) {
    const double once = std::max(TimeCalls(operation, 1), 1.0);
    const double warm = std::max(TimeCalls(operation, static_cast<std::size_t>(batch_ns / once) + 1), 1.0);
    return static_cast<std::size_t>(batch_ns / warm) + 1;
  };
  const std::size_t our_calls = calls_for(ours);
  const std::size_t peer_calls = calls_for(peer);
  std::vector<double> our_times, peer_times, ratios;
  for (std::size_t pair = 0; pair < pairs; ++pair) {
    double our_time = 0;
    double peer_time = 0;
    if (pair % 2 == 0) {
      our_time = TimeCalls(ours, our_calls);
      peer_time = TimeCalls(peer, peer_calls);
    } else {
      peer_time = TimeCalls(peer, peer_calls);
      our_time = TimeCalls(ours, our_calls);
    }
    our_times.push_back(our_time);
    peer_times.push_back(peer_time);
    ratios.push_back(peer_time / our_time);
  }
  return {QuartilesOf(our_times), QuartilesOf(peer_times), QuartilesOf(ratios)};
}

/// One line of a report: medians of the times, median and quartiles of the ratio.
inline void Print(const char* what, const char* peer, const Comparison& comparison) {
  std::printf("%-34s %12.1f ns   %-24s %12.1f ns   %7.2f times as fast  (%.2f to %.2f)\n", what,
              comparison.ours_ns.median, peer, comparison.peer_ns.median, comparison.ratio.median,
              comparison.ratio.lower, comparison.ratio.upper);
  std::fflush(stdout);
}

}  // namespace Zelto::Bench
