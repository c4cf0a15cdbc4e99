/// @file
/// Memory that runs out on demand, for this thread or for the others.
#pragma once

#include <cstddef>
#include <functional>

namespace Zelto::Testing {

struct AllocationOutcome {
  bool failed;  ///< whether there was such an allocation
  bool thrown;  ///< whether `std::bad_alloc` came out
};

/// Runs `act` with one allocation of this thread failing: the one that `before` others precede.
AllocationOutcome RunWithFailure(std::size_t before, const std::function<void()>& act);

/// While it lives, no other thread of the process can allocate.
class NoMemoryElsewhere {
 public:
  NoMemoryElsewhere();
  ~NoMemoryElsewhere();
  NoMemoryElsewhere(const NoMemoryElsewhere&) = delete;
  NoMemoryElsewhere& operator=(const NoMemoryElsewhere&) = delete;
};

/// How many blocks of this thread have been allocated and not freed, wherever they were.
std::ptrdiff_t LiveBlocks();

}  // namespace Zelto::Testing
