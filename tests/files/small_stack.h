// A thread on which deep recursion ends badly.
#pragma once

#include <cstddef>
#include <functional>

namespace Zelto::Testing {

inline constexpr std::size_t kSmallStack = 128 * 1024;

/// Runs a function on a thread with a stack of `kSmallStack` bytes and waits for its end.
void RunWithSmallStack(std::function<void()> function);

}  // namespace Zelto::Testing
