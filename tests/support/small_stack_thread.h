/// @file
/// A thread with a stack of a given size, for code that must not need a deep one.
#pragma once

#include <cstddef>
#include <functional>

namespace Zelto::Testing {

/// Runs `work` on a thread of its own and waits for its end. The work must not throw.
void RunOnSmallStack(std::size_t stack_bytes, const std::function<void()>& work);

}  // namespace Zelto::Testing
