#include "bench/support/report.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace Zelto::Bench {
namespace {

// Appends a line, whose format begins with the program's name.
template <typename... Fields>
void Record(const char* format, Fields... fields) {
  const char* path = std::getenv("ZELTO_BENCH_RESULTS");
  if (path == nullptr) {
    return;
  }
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "a"), std::fclose);
  if (file == nullptr) {
    std::perror(path);
    std::exit(EXIT_FAILURE);
  }
  std::fprintf(file.get(), format, program_invocation_short_name, fields...);
}

}  // namespace

Quartiles QuartilesOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const auto at = [&values](std::size_t quarter) { return values[(values.size() - 1) * quarter / 4]; };
  return {at(1), at(2), at(3)};
}

void Print(const std::string& what, const std::string& peer, const Comparison& comparison) {
  const auto& [ours, peers, ratio] = comparison;
  std::printf("%-40s %12.1f ns   %-24s %12.1f ns   %7.2f times as fast  (%.2f to %.2f)\n", what.c_str(), ours.median,
              peer.c_str(), peers.median, ratio.median, ratio.lower, ratio.upper);
  std::fflush(stdout);
  Record("ratio\t%s\t%s\t%s\t%.6g\t%.6g\t%.6g\t%.6g\t%.6g\n", what.c_str(), peer.c_str(), ours.median, peers.median,
         ratio.lower, ratio.median, ratio.upper);
}

void PrintFigure(const std::string& what, const std::string& who, double value, const std::string& unit) {
  std::printf("%-40s %-24s %14.6g %s\n", what.c_str(), who.c_str(), value, unit.c_str());
  std::fflush(stdout);
  Record("figure\t%s\t%s\t%s\t%.6g\t%s\n", what.c_str(), who.c_str(), value, unit.c_str());
}

}  // namespace Zelto::Bench
