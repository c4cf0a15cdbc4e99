/// @file
/// Memory that runs out on demand, for this thread.
#pragma once

#include <cstddef>

namespace Zelto::Testing {

/// While it lives, one allocation of this thread fails: the one that `before` others precede.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t before);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /// Whether it has failed; without that, what was run needs fewer.
  bool HasFailed() const;
};

/// How many blocks of this thread have been allocated and not freed, wherever they were.
std::ptrdiff_t LiveBlocks();

}  // namespace Zelto::Testing
