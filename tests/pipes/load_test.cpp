#include "tests/pipes/pipe_fixture.h"
#include "tests/support/process_resources.h"

#include <future>
#include <latch>
#include <thread>

namespace Zelto::Utilities {
namespace {

TEST(PipeLoad, ABurstOfClientsGetsInWhole) {
  constexpr unsigned int kClients = 200;
  const EchoServer echo;
  echo.Start();
  OpenClient(echo.name).reset();  // the server listens
  std::latch ready(kClients);
  std::vector<std::future<std::wstring>> answers;
  // Every accepted client has one number, and none is left out.
  std::vector<std::wstring> expected;
  for (unsigned int i = 1; i <= kClients; ++i) {
    answers.push_back(std::async(std::launch::async, [&] {
      ready.arrive_and_wait();
      return Ask(*OpenClient(echo.name), L"hello");
    }));
    expected.push_back(std::to_wstring(i) + L":hello");
  }
  std::vector<std::wstring> heard;
  for (auto& answer : answers) {
    heard.push_back(answer.get());
  }
  EXPECT_THAT(heard, testing::UnorderedElementsAreArray(expected));
  EXPECT_TRUE(echo.dropped->WaitFor(kClients + 1));
}

TEST(PipeLoad, AThousandClientsMayConnectAndLeave) {
  const EchoServer echo;
  echo.Start();
  const auto bystander = OpenClient(echo.name);
  EXPECT_EQ(Ask(*bystander, L"x"), L"0:x");
  const auto before = Testing::CountProcessResources();
  for (int i = 0; i < 1000; ++i) {
    OpenBare(echo.name);
  }
  EXPECT_EQ(Ask(*bystander, L"y"), L"0:y");
  EXPECT_TRUE(echo.dropped->WaitFor(1000));
  EXPECT_EQ(Ask(*OpenClient(echo.name), L"z"), L"1001:z");
  // Threads and pipes of those that left are released while the server runs.
  EXPECT_TRUE(Eventually([&] {
    const auto now = Testing::CountProcessResources();
    return now.threads <= before.threads + 5 && now.handles <= before.handles + 30;
  }));
}

TEST(PipeLoad, NothingIsLeftAfterManyRounds) {
  const auto round = [](const EchoServer& echo) {
    echo.Start();
    std::vector<std::shared_ptr<AsyncNamedPipeClient>> clients;
    for (int i = 0; i < 10; ++i) {
      clients.push_back(OpenClient(echo.name));
      clients.back()->WriteMessage(L"hello").get();
    }
    for (const auto& client : clients) {
      EXPECT_THAT(client->ReadMessage().get(), testing::EndsWith(L":hello"));
    }
    echo.server->Stop();
  };
  const EchoServer echo;
  const auto settled = [] {
    // The pool's idle threads end after two seconds.
    std::this_thread::sleep_for(std::chrono::seconds(3));
    return Testing::CountProcessResources();
  };
  for (int i = 0; i < 20; ++i) {
    round(echo);
  }
  const auto before = settled();
  for (int i = 0; i < ZELTO_SOAK_ROUNDS; ++i) {
    round(echo);
  }
  const auto after = settled();
  EXPECT_LE(after.threads, before.threads);
  EXPECT_LE(after.handles, before.handles + ZELTO_SOAK_HANDLE_SLACK);
  EXPECT_LE(after.memory_bytes, before.memory_bytes + ZELTO_SOAK_SLACK_MIB * 1024 * 1024);
}

}  // namespace
}  // namespace Zelto::Utilities
