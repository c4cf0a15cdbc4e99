/// @file
/// What this process holds of the system, for tests that nothing leaks.
#pragma once

#include <cstddef>

namespace Zelto::Testing {

struct ProcessResources {
  std::size_t handles = 0;       ///< open handles, or file descriptors
  std::size_t threads = 0;       ///< threads alive
  std::size_t memory_bytes = 0;  ///< private memory in use
};

ProcessResources CountProcessResources();

}  // namespace Zelto::Testing
