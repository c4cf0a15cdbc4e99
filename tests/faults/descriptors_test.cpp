// What the library does when the process can open no more descriptors: it says so, loses none, and goes on when there
// are some again.
#include "tests/faults/descriptor_limit.h"
#include "tests/pipes/pipe_fixture.h"
#include "tests/support/process_resources.h"
#include "tests/support/temp_folder.h"
#include "zelto/files/file_appender.h"
#include "zelto/threading/event_access_control.h"
#include "zelto/threading/thread_pool.h"
#include "zelto/threading/timer.h"
#include "zelto/threading/timer_thread.h"

#include <fcntl.h>
#include <unistd.h>

#include <functional>

namespace Zelto::Utilities {
namespace {

using Testing::CountProcessResources;
using Testing::DescriptorLimit;

/// The code of what is thrown; 0 when nothing is.
std::uint32_t CodeOf(const std::function<void()>& act) {
  try {
    act();
    return 0;
  } catch (const std::system_error& error) {
    return static_cast<std::uint32_t>(error.code().value());
  }
}

TEST(OutOfDescriptors, EventsSaySo) {
  const DescriptorLimit none(0);
  EXPECT_FALSE(Platform::CreateManualEvent());
  EXPECT_EQ(CodeOf([] { EventAccessControl::CreateLocalEvent(); }), Platform::kTooManyOpenFiles);
}

TEST(OutOfDescriptors, AClientSaysSoAndOpensLater) {
  const EchoServer echo;
  echo.Start();
  OpenClient(echo.name);  // what the process opens once is open
  const std::size_t before = CountProcessResources().handles;
  AsyncNamedPipeClient client(echo.name, kLimitMs);
  {
    const DescriptorLimit none(0);
    ExpectWin32Failure([&] { client.Open(); }, "Error opening named pipe: ", Platform::kTooManyOpenFiles);
  }
  EXPECT_TRUE(Eventually([&] { return CountProcessResources().handles <= before; }));
  client.Open();
  EXPECT_EQ(Ask(client, L"x"), L"1:x");
}

TEST(OutOfDescriptors, AServerStartsOnceThereAreSome) {
  for (const rlim_t more : {0U, 1U, 2U, 3U}) {
    const std::size_t before = CountProcessResources().handles;
    {
      const DiagnosticsRecorder diagnostics;
      const EchoServer echo;
      bool started = false;
      {
        const DescriptorLimit few(more);
        const std::uint32_t code = CodeOf([&] { echo.Start(); });
        EXPECT_TRUE(code == 0 || code == Platform::kTooManyOpenFiles) << code;
        started = code == 0;
        EXPECT_EQ(echo.server->IsStarted(), started);
      }
      if (!started) {
        echo.Start();
      }
      AsyncNamedPipeClient client(echo.name, kLimitMs);
      EXPECT_TRUE(Eventually([&] { return CodeOf([&] { client.Open(); }) == 0; }));
      EXPECT_EQ(Ask(client, L"x"), L"0:x");
    }
    EXPECT_TRUE(Eventually([&] { return CountProcessResources().handles <= before; })) << more;
  }
}

TEST(OutOfDescriptors, AServerKeepsTheClientsThatWait) {
  const DiagnosticsRecorder diagnostics;
  const EchoServer echo;
  echo.Start();
  AsyncNamedPipeClient client(echo.name, kLimitMs);
  {
    const DescriptorLimit only_the_clients(1);
    client.Open();
    EXPECT_TRUE(diagnostics.Heard(L"can't connect to client:"));
  }
  EXPECT_EQ(Ask(client, L"x"), L"0:x");
}

// A message that is too large for a packet takes a descriptor at each end: of one that is left, either may come first.
TEST(OutOfDescriptors, ALargeMessageFailsAndTheServerGoesOn) {
  const std::wstring large(100000, L'y');
  const EchoServer echo;
  echo.Start();
  const auto bystander = OpenClient(echo.name);
  EXPECT_EQ(Ask(*bystander, L"x"), L"0:x");
  const std::size_t before = CountProcessResources().handles;
  for (const rlim_t more : {0U, 1U}) {
    const auto client = OpenClient(echo.name, 2000);
    EXPECT_FALSE(Ask(*client, L"x").empty());
    {
      const DescriptorLimit few(more);
      std::wstring answer;
      try {
        answer = Ask(*client, large);
      } catch (const std::exception&) {
        answer.clear();
      }
      EXPECT_TRUE(answer.empty() || (more == 1 && answer.ends_with(large)));
      EXPECT_EQ(Ask(*bystander, L"x"), L"0:x");
    }
    client->Close();
    client->Open();
    EXPECT_TRUE(Ask(*client, large).ends_with(large));
  }
  EXPECT_TRUE(Eventually([&] { return CountProcessResources().handles <= before; }));
}

// A service without a standard input has a number free that no handle may have.
TEST(OutOfDescriptors, ALargeMessageIsNotTakenForAnEmptyOne) {
  const Platform::Testing::Pair pair("no-input");
  ASSERT_EQ(Write(pair.client, std::string(100000, 'x')), Platform::kSuccess);
  const int input = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  {
    const DescriptorLimit none(0);
    ::close(STDIN_FILENO);
    EXPECT_EQ(Read(pair.server).code, Platform::kTooManyOpenFiles);
    ::dup2(input, STDIN_FILENO);
  }
  ::close(input);
}

TEST(OutOfDescriptors, ALogLosesALineAndSaysSo) {
  const Testing::TempFolder folder;
  const std::wstring path = folder / L"agent.log";
  FileAppender log(path);
  log.AppendLine(L"first");
  {
    const DiagnosticsRecorder diagnostics;
    const DescriptorLimit none(0);
    log.AppendLine(L"lost");
    EXPECT_TRUE(diagnostics.Heard(path));
  }
  log.AppendLine(L"last");
  EXPECT_EQ(Testing::ReadFile(path), "first\r\nlast\r\n");
}

TEST(OutOfDescriptors, PoolsAndTimersNeedNone) {
  const DescriptorLimit none(0);
  ThreadPool pool(2);
  pool.Start();
  pool.ScheduleTask([] {}).get();
  Counter ticks;
  TimerThread thread([&] { ticks.Add(); }, 1);
  thread.Start();
  Timer timer(1, true, [&] { ticks.Add(); });
  EXPECT_TRUE(ticks.WaitFor(3));
  thread.Stop();
  pool.Stop();
}

}  // namespace
}  // namespace Zelto::Utilities
