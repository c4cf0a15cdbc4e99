// zelto_soak [MINUTES]: a service under load for a long time, watched for growth.
//
// The time is cut into rounds. In each, processes with 50 clients in all talk to the service, stall, send garbage,
// leave, are killed and come back. Between the rounds everything rests, and what the service then holds of the system
// (handles, threads, memory) is compared with the first rounds. Fails on growth, on a wrong answer and when a round
// hangs.
#include "soak/workload.h"
#include "tests/support/child_process.h"
#include "tests/support/process_resources.h"
#include "tests/support/temp_folder.h"
#include "zelto/platform/process.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using Zelto::Soak::Counts;
using Zelto::Soak::Workload;
using Zelto::Testing::ChildProcess;
using Zelto::Testing::CountProcessResources;
using Zelto::Testing::ProcessResources;
using Clock = std::chrono::steady_clock;

constexpr int kProcesses = 10;
constexpr int kClientsPerProcess = 5;
constexpr int kMostRounds = 12;
constexpr std::chrono::milliseconds kKillInterval{700};
constexpr std::size_t kHandleSlack = 32;  // GCC's runtime for Windows keeps an event for each thread of a busy moment
constexpr std::size_t kThreadSlack = 4;   // a system's timer threads come and go with the machine's load
constexpr std::size_t kStackBytes = 1U << 20U;
constexpr double kMemoryGrowth = 0.10;                       // of what the first rounds left,
constexpr std::size_t kMemorySlack = std::size_t{2} << 20U;  // and this much

struct Tally {
  int killed = 0;
  int wrong = 0;  // processes that ended with a failure
};

std::unique_ptr<ChildProcess> StartClients(const std::string& pipe, std::minstd_rand& random) {
  return std::make_unique<ChildProcess>(
      "zelto_soak_clients",
      std::vector<std::string>{pipe, std::to_string(kClientsPerProcess), std::to_string(random() % 1000000)});
}

void RunRound(const std::string& pipe, Clock::duration length, std::minstd_rand& random, Tally& tally) {
  std::vector<std::unique_ptr<ChildProcess>> processes;
  processes.reserve(kProcesses);
  for (int i = 0; i < kProcesses; ++i) {
    processes.push_back(StartClients(pipe, random));
  }
  const auto end = Clock::now() + length;
  while (Clock::now() + kKillInterval < end) {
    std::this_thread::sleep_for(kKillInterval);
    std::unique_ptr<ChildProcess>& victim = processes[random() % processes.size()];
    victim->Kill();
    ++tally.killed;
    victim = StartClients(pipe, random);
  }
  for (const auto& process : processes) {
    process->CloseInput();
  }
  for (const auto& process : processes) {
    tally.wrong += process->Wait() == 0 ? 0 : 1;
  }
}

/// What is held when nothing goes on any more: the least of some seconds, in which idle threads end.
ProcessResources AtRest() {
  ProcessResources least = CountProcessResources();
  for (int i = 0; i < 40; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const ProcessResources now = CountProcessResources();
    least.handles = std::min(least.handles, now.handles);
    least.threads = std::min(least.threads, now.threads);
    least.memory_bytes = std::min(least.memory_bytes, now.memory_bytes);
  }
  return least;
}

/// The most of each that a range of rounds left.
template <class Iterator>
ProcessResources Most(Iterator first, Iterator last) {
  ProcessResources most;
  for (; first != last; ++first) {
    most.handles = std::max(most.handles, first->handles);
    most.threads = std::max(most.threads, first->threads);
    most.memory_bytes = std::max(most.memory_bytes, first->memory_bytes);
  }
  return most;
}

bool HasGrown(const char* what, std::size_t before, std::size_t after, std::size_t slack) {
  const bool grown = after > before + slack;
  std::printf("%s: %zu after the first rounds, %zu at the end%s\n", what, before, after, grown ? "  GROWTH" : "");
  return grown;
}

int Soak(double minutes) {
  const std::string pipe = "zelto-soak-" + std::to_string(Zelto::Platform::CurrentProcessId());
  const Zelto::Testing::TempFolder folder;
  const int rounds = std::clamp(static_cast<int>(minutes * 6), 2, kMostRounds);
  const int compared = (rounds + 2) / 3;  // so many first rounds with so many last ones
  const auto round_length = std::chrono::milliseconds(static_cast<std::int64_t>(minutes * 60000) / rounds);
  std::minstd_rand random(1);
  Counts counts;
  Tally tally;
  std::vector<ProcessResources> rests;
  {
    const Workload workload({pipe.begin(), pipe.end()}, folder.Path() / "soak.log", counts);
    for (int round = 1; round <= rounds; ++round) {
      RunRound(pipe, round_length, random, tally);
      rests.push_back(AtRest());
      std::printf(
          "round %2d of %d: %zu handles, %zu threads, %zu KiB; %llu messages, %llu log lines, %d processes killed\n",
          round, rounds, rests.back().handles, rests.back().threads, rests.back().memory_bytes / 1024,
          static_cast<unsigned long long>(counts.messages), static_cast<unsigned long long>(counts.log_lines),
          tally.killed);
      std::fflush(stdout);
    }
  }
  const ProcessResources before = Most(rests.begin(), rests.begin() + compared);
  const ProcessResources after = Most(rests.end() - compared, rests.end());
  bool failed = HasGrown("handles", before.handles, after.handles, kHandleSlack);
  failed |= HasGrown("threads", before.threads, after.threads, kThreadSlack);
  const std::size_t stacks = after.threads > before.threads ? (after.threads - before.threads) * kStackBytes : 0;
  const auto memory_slack = static_cast<std::size_t>(static_cast<double>(before.memory_bytes) * kMemoryGrowth);
  failed |= HasGrown("memory, KiB", before.memory_bytes / 1024, after.memory_bytes / 1024,
                     (memory_slack + kMemorySlack + stacks) / 1024);
  std::printf("%llu clients dropped, %llu tasks, %llu log lines; %d client processes with failures\n",
              static_cast<unsigned long long>(counts.clients_dropped), static_cast<unsigned long long>(counts.tasks),
              static_cast<unsigned long long>(counts.log_lines), tally.wrong);
  const bool worked = counts.messages > 0 && counts.tasks > 0 && counts.log_lines == counts.tasks;
  failed |= tally.wrong != 0 || !worked;
  std::printf("%s\n", failed ? "FAILED" : "no growth, every answer right");
  return failed ? 1 : 0;
}

}  // namespace

int main(int count, char** arguments) {
  const double minutes = count > 1 ? std::strtod(arguments[1], nullptr) : 10;
  if (!(minutes > 0)) {
    std::fprintf(stderr, "usage: zelto_soak [MINUTES]\n");
    return 2;
  }
  try {
    return Soak(minutes);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "soak: %s\n", failure.what());
    return 1;
  }
}
