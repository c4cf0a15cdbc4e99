// A module that uses the library behind a C interface. It leaves the library's pool with threads, and an open client;
// its timers, its thread pool and the timer queue go just before it does.
#include "zelto/pipes/async_named_pipe_client.h"
#include "zelto/pipes/multi_client_named_pipe_server.h"
#include "zelto/threading/thread_pool.h"
#include "zelto/threading/timer.h"
#include "zelto/threading/timer_thread.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <future>
#include <memory>
#include <string>

namespace {

// Runs all three kinds of threads once, and lets them go while they run. @return whether they ran
bool UseThreads() {
  using namespace Zelto::Utilities;
  std::promise<void> ran[3];
  std::atomic<bool> again[2] = {};
  const auto run_once = [&](std::size_t which) {
    if (!again[which].exchange(true)) {
      ran[which].set_value();
    }
  };
  ThreadPool pool(2);
  Timer timer(1, false, [&] { run_once(0); });
  TimerThread thread([&] { run_once(1); }, 1);
  thread.Start();
  pool.Start();
  pool.ScheduleTask([&] { ran[2].set_value(); });
  for (std::promise<void>& each : ran) {
    if (each.get_future().wait_for(std::chrono::seconds(20)) != std::future_status::ready) {
      return false;
    }
  }
  return true;
}

}  // namespace

extern "C" int UsePlugIn(const char* pipe_name) {
  using namespace Zelto::Utilities;
  static std::shared_ptr<AsyncNamedPipeClient> kept;  // goes with the module, or with the process
  try {
    if (!UseThreads()) {
      return 12;
    }
    const std::string narrow = pipe_name;
    const std::wstring name(narrow.begin(), narrow.end());
    const auto server = MultiClientNamedPipeServer::Create(
        name, [](unsigned int, const std::wstring& message) { return message; }, NamedPipeMessageEncoding::Utf8, 5000,
        4096, false, [](unsigned int) {});
    server->Start({});
    kept = std::make_shared<AsyncNamedPipeClient>(name);
    kept->Open();
    kept->WriteMessage(L"hello", false);
    return kept->ReadMessage().then([](const std::wstring& answer) { return answer == L"hello" ? 0 : 10; }).get();
  } catch (const std::exception&) {
    return 11;
  }
}
