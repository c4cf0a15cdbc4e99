/// @file
/// What a benchmark tells: lines to read, and the same for the page about performance.
///
/// When the environment variable ZELTO_BENCH_RESULTS names a file, each line is also appended there, its fields
/// separated by tabs:
///
///     ratio   PROGRAM  WHAT  PEER  our nanoseconds  the peer's  lower quartile of the ratio  median  upper quartile
///     figure  PROGRAM  WHAT  WHO  value  unit
///
/// `bench/report.py` makes the table, the page and the chart of them.
#pragma once

#include <string>
#include <vector>

namespace Zelto::Bench {

/// The middle half of some measurements.
struct Quartiles {
  double lower;
  double median;
  double upper;
};

/// @param values  at least one
Quartiles QuartilesOf(std::vector<double> values);

/// Two operations side by side; the times are per call.
struct Comparison {
  Quartiles ours_ns;
  Quartiles peer_ns;
  Quartiles ratio;  ///< the peer's time divided by ours, pair by pair: above 1 we are faster
};

/// A ratio: medians of the times, median and quartiles of the ratio.
void Print(const std::string& what, const std::string& peer, const Comparison& comparison);

/// What is no time, or has no peer beside it in turns: a size, a number of calls. "Zelto" stands for ourselves.
void PrintFigure(const std::string& what, const std::string& who, double value, const std::string& unit);

}  // namespace Zelto::Bench
