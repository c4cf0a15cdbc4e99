/// @file
/// Where programs run whose time depends on it: a message to another process wakes it, and a wake-up across processors
/// takes several times as long as one on the same processor. Left to the system, either way of running stays for a
/// while.
#pragma once

namespace Zelto::Bench {

/// Keeps the calling thread on a processor, and the threads and processes that it starts afterwards
/// (`sched_setaffinity`).
///
/// @param index  among those that the program may use, the first is 0
/// @return       false if there are not so many, or the system refuses; nothing has changed then
bool StayOnProcessor(unsigned index);

}  // namespace Zelto::Bench
