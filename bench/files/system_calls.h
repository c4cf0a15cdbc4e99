/// @file
/// How many system calls an operation makes.
#pragma once

#include <cstdint>
#include <functional>

namespace Zelto::Bench {

/// Counts the system calls of an operation in a child process that is traced; what surrounds it is not counted.
///
/// @return  -1 when the system does not let us trace
std::int64_t CountSystemCalls(const std::function<void()>& operation);

}  // namespace Zelto::Bench
