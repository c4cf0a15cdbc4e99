/// @file
/// The process under watch: everything of the library that runs in a service at once.
#pragma once

#include "zelto/files/file_appender.h"
#include "zelto/pipes/multi_client_named_pipe_server.h"
#include "zelto/threading/concurrent_queue.h"
#include "zelto/threading/thread_pool.h"
#include "zelto/threading/timer.h"
#include "zelto/threading/timer_thread.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace Zelto::Soak {

/// What has been done so far.
struct Counts {
  std::atomic<std::uint64_t> messages{0};
  std::atomic<std::uint64_t> clients_dropped{0};
  std::atomic<std::uint64_t> tasks{0};
  std::atomic<std::uint64_t> log_lines{0};
};

/// A server that echoes, a timer that gives a pool work, and a timer thread that writes what came of it into a log
/// which rotates by size. All of it runs from the constructor to the destructor.
class Workload {
 public:
  Workload(const std::wstring& pipe, const std::filesystem::path& log, Counts& counts);
  ~Workload();
  Workload(const Workload&) = delete;
  Workload& operator=(const Workload&) = delete;

 private:
  void ScheduleTask();
  void WriteLog();

  Counts& counts_;
  Utilities::FileAppender log_;
  Utilities::ConcurrentQueue<std::wstring> lines_;
  std::shared_ptr<Utilities::MultiClientNamedPipeServer> server_;
  Utilities::ThreadPool pool_{2};
  Utilities::TimerThread log_thread_;
  Utilities::Timer task_timer_;
};

}  // namespace Zelto::Soak
