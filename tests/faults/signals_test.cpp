// Interrupted system calls: every thread of the process gets a signal many times a second, without SA_RESTART, while
// the library works. Nothing may be lost, doubled or cut short.
#include "tests/pipes/pipe_fixture.h"
#include "tests/support/temp_folder.h"
#include "zelto/files/file_appender.h"
#include "zelto/threading/thread_pool.h"
#include "zelto/threading/timer.h"
#include "zelto/threading/timer_thread.h"

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <future>
#include <thread>

namespace Zelto::Utilities {
namespace {

std::atomic<int> interruptions = 0;

class SignalStorm {
 public:
  SignalStorm() {
    struct sigaction action {};
    action.sa_handler = [](int) { ++interruptions; };
    ::sigaction(SIGUSR1, &action, &before_);
    thread_ = std::thread([this] {
      const auto self = static_cast<pid_t>(::syscall(SYS_gettid));
      while (!over_) {
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
          const pid_t id = std::stoi(task.path().filename().string());
          if (id != self) {
            ::syscall(SYS_tgkill, ::getpid(), id, SIGUSR1);
          }
        }
        std::this_thread::sleep_for(std::chrono::microseconds(300));
      }
    });
  }
  ~SignalStorm() {
    over_ = true;
    thread_.join();
    ::signal(SIGUSR1, SIG_IGN);  // drops what a thread has not taken yet: the former action ends the process
    ::sigaction(SIGUSR1, &before_, nullptr);
  }
  SignalStorm(const SignalStorm&) = delete;
  SignalStorm& operator=(const SignalStorm&) = delete;

 private:
  struct sigaction before_ {};
  std::atomic<bool> over_ = false;
  std::thread thread_;
};

TEST(Interruptions, MessagesArriveWhole) {
  const SignalStorm storm;
  const EchoServer echo;
  echo.Start();
  const std::wstring large(300000, L'z');
  std::vector<std::future<void>> clients;
  for (int i = 0; i < 4; ++i) {
    clients.push_back(std::async(std::launch::async, [&] {
      const auto client = OpenClient(echo.name);
      for (int round = 0; round < 50; ++round) {
        const std::wstring message = round % 10 == 0 ? large : L"message " + std::to_wstring(round);
        ASSERT_TRUE(Ask(*client, message).ends_with(L":" + message)) << round;
      }
      for (int round = 0; round < 5; ++round) {  // nobody waits for these
        client->WriteMessage(large, false);
      }
    }));
  }
  for (std::future<void>& client : clients) {
    client.get();
  }
  EXPECT_TRUE(echo.dropped->WaitFor(4));
  EXPECT_GT(interruptions, 0);
}

TEST(Interruptions, WaitsLastTheirTime) {
  using namespace Platform;
  const SignalStorm storm;
  const Platform::Testing::Pair pair("signals");
  const std::vector<SharedHandle> events{CreateManualEvent(), CreateManualEvent()};
  char byte = 0;
  Platform::Testing::Operation read(pair.server);
  ASSERT_EQ(read->BeginRead(&byte, 1), kIoPending);
  constexpr std::uint32_t kTimeMs = 40;
  const std::function<std::uint32_t()> waits[] = {
      [&] { return WaitForEvent(events[0], kTimeMs); },
      [&] { return WaitForEvents(events, true, kTimeMs); },
      [&] { return WaitForAny(std::vector<Waitable>{*read}, kTimeMs); },
      [&] {
        return WaitForAny(std::vector<Waitable>{*read, events[0]}, kTimeMs);
      },
  };
  for (const auto& wait : waits) {
    const auto begin = Clock::now();
    EXPECT_EQ(wait(), kWaitTimeout);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(kTimeMs));
  }
}

TEST(Interruptions, LinesAreWrittenWholeAndOnce) {
  const SignalStorm storm;
  const Testing::TempFolder folder;
  FileAppender log(folder / L"agent.log");
  std::string expected;
  for (int line = 0; line < 200; ++line) {
    log.AppendLine(std::to_wstring(line) + std::wstring(5000, L'x'));
    expected += std::to_string(line) + std::string(5000, 'x') + "\r\n";
  }
  EXPECT_EQ(Testing::ReadFile(folder / L"agent.log"), expected);
}

TEST(Interruptions, TasksRunOnceAndTimersKeepTheirTime) {
  const SignalStorm storm;
  ThreadPool pool(3);
  pool.Start();
  std::atomic<int> runs = 0;
  for (int i = 0; i < 200; ++i) {
    pool.ScheduleTask([&] { ++runs; }).get();
  }
  EXPECT_EQ(runs, 200);
  pool.Stop();

  constexpr std::uint32_t kIntervalMs = 100;
  Counter ticks;
  const auto begin = Clock::now();
  TimerThread thread([&] { ticks.Add(0); }, kIntervalMs);
  thread.Start();
  Timer timer(kIntervalMs, false, [&] { ticks.Add(1); });
  EXPECT_TRUE(ticks.WaitFor(6));
  thread.Stop();
  timer.Stop();
  const std::vector<unsigned int> ids = ticks.Ids();
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
  for (const unsigned int id : {0U, 1U}) {
    EXPECT_LE(std::count(ids.begin(), ids.end(), id), elapsed / kIntervalMs + 1) << "a tick came early";
  }
}

}  // namespace
}  // namespace Zelto::Utilities
