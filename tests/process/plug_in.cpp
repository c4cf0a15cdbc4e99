// A module that uses the library behind a C interface. It leaves the library's pool with threads, and an open client;
// its timers, its thread pool and the timer queue go just before it does.
#include "tests/support/counter.h"
#include "zelto/pipes/async_named_pipe_client.h"
#include "zelto/pipes/multi_client_named_pipe_server.h"
#include "zelto/threading/thread_pool.h"
#include "zelto/threading/timer.h"
#include "zelto/threading/timer_thread.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <memory>
#include <string>

namespace {

// Runs all three kinds of threads, and lets them go while they run. @return whether they ran
bool UseThreads() {
  using namespace Zelto::Utilities;
  std::array<Zelto::Testing::Counter, 3> ran;
  ThreadPool pool(2);
  Timer timer(1, false, [&] { ran[0].Add(); });
  TimerThread thread([&] { ran[1].Add(); }, 1);
  thread.Start();
  pool.Start();
  pool.ScheduleTask([&] { ran[2].Add(); });
  return std::all_of(ran.begin(), ran.end(),
                     [](const auto& each) { return each.WaitFor(1, std::chrono::seconds(20)); });
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
