#include "tests/support/process_resources.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace Zelto::Testing {

namespace {

std::size_t CountEntries(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

ProcessResources CountProcessResources() {
  std::size_t total_pages = 0;
  std::size_t resident_pages = 0;
  std::ifstream("/proc/self/statm") >> total_pages >> resident_pages;
  return {CountEntries("/proc/self/fd"), CountEntries("/proc/self/task"),
          resident_pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))};
}

}  // namespace Zelto::Testing
