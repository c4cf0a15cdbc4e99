#include "bench/files/system_calls.h"

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace Zelto::Bench {
namespace {

// Counts from one stop by SIGUSR1 to the next; the child raises them around the operation.
std::int64_t CountBetweenMarks(pid_t child) {
  std::int64_t stops = 0;
  int marks = 0;
  int status = 0;
  while (marks < 2) {
    if (::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) != 0 || ::waitpid(child, &status, 0) != child ||
        !WIFSTOPPED(status)) {
      return -1;
    }
    if (WSTOPSIG(status) == SIGUSR1) {
      ++marks;
    } else if (marks == 1) {
      ++stops;
    }
  }
  // Each call stops at its entry and its exit. The marks leave the exit of the first kill and the entry of the second
  // inside, and `raise` makes some calls of its own, which the caller's baseline takes away.
  return stops / 2;
}

std::int64_t CountWithMarks(const std::function<void()>& operation) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::raise(SIGSTOP);
    ::raise(SIGUSR1);
    operation();
    ::raise(SIGUSR1);
    ::_exit(0);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) {
    return -1;
  }
  ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
  const std::int64_t count = CountBetweenMarks(child);
  ::kill(child, SIGKILL);
  ::waitpid(child, &status, 0);
  return count;
}

}  // namespace

std::int64_t CountSystemCalls(const std::function<void()>& operation) {
  const std::int64_t baseline = CountWithMarks([] {});
  const std::int64_t count = CountWithMarks(operation);
  return baseline < 0 || count < 0 ? -1 : count - baseline;
}

}  // namespace Zelto::Bench
