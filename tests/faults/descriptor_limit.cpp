#include "tests/faults/descriptor_limit.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <string>

namespace Zelto::Testing {
namespace {

std::mutex limit_lock;

}  // namespace

DescriptorLimit::DescriptorLimit(rlim_t more) {
  int highest = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    highest = std::max(highest, std::stoi(entry.path().filename().string()));
  }
  // Numbers that are free below the highest would count as well: they are taken.
  int next = -1;
  do {
    next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    taken_.push_back(next);
  } while (next >= 0 && next < highest);
  const std::lock_guard guard(limit_lock);
  EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before_), 0);
  const rlimit limit{static_cast<rlim_t>(next) + 1 + more, before_.rlim_max};
  EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

DescriptorLimit::~DescriptorLimit() {
  const std::lock_guard guard(limit_lock);
  ::setrlimit(RLIMIT_NOFILE, &before_);
  for (const int descriptor : taken_) {
    ::close(descriptor);
  }
}

}  // namespace Zelto::Testing

// UndefinedBehaviorSanitizer opens a pipe to learn whether it may look at an object, and takes the object for a wrong
// one without: its pipe, and nobody else asks for one, is not limited.
extern "C" int pipe(int ends[2]) noexcept {
  const std::lock_guard guard(Zelto::Testing::limit_lock);
  rlimit limited{};
  ::getrlimit(RLIMIT_NOFILE, &limited);
  const rlimit open{limited.rlim_max, limited.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &open);
  const int result = ::pipe2(ends, 0);
  ::setrlimit(RLIMIT_NOFILE, &limited);
  return result;
}
