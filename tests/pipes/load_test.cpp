#include "tests/pipes/pipe_fixture.h"
#include "tests/support/process_resources.h"

#include <thread>

namespace Zelto::Utilities {
namespace {

TEST(PipeLoad, ABurstOfClientsGetsInWhole) {
  constexpr unsigned int kClients = 200;
  const EchoServer echo;
  echo.Start();
  OpenClient(echo.name).reset();  // the server listens
  std::mutex mutex;
  std::vector<std::wstring> answers;
  std::condition_variable all_ready;
  unsigned int ready = 0;
  std::vector<std::thread> threads;
  for (unsigned int i = 0; i < kClients; ++i) {
    threads.emplace_back([&] {
      AsyncNamedPipeClient client(echo.name, kLimitMs);
      {
        std::unique_lock lock(mutex);
        ++ready;
        all_ready.notify_all();
        all_ready.wait(lock, [&] { return ready == kClients; });
      }
      std::wstring answer;
      try {
        client.Open();
        answer = Ask(client, L"hello");
      } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
      }
      const std::lock_guard guard(mutex);
      answers.push_back(answer);
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  // Every accepted client has one number, and none is left out.
  std::vector<std::wstring> expected;
  for (unsigned int i = 1; i <= kClients; ++i) {
    expected.push_back(std::to_wstring(i) + L":hello");
  }
  EXPECT_THAT(answers, testing::UnorderedElementsAreArray(expected));
  EXPECT_TRUE(echo.dropped->WaitFor(kClients + 1));
}

TEST(PipeLoad, AThousandClientsMayConnectAndLeave) {
  const EchoServer echo;
  echo.Start();
  const auto bystander = OpenClient(echo.name);
  EXPECT_EQ(Ask(*bystander, L"x"), L"0:x");
  const auto before = Testing::CountProcessResources();
  for (int i = 0; i < 1000; ++i) {
    BareEnd::Open(echo.name);
  }
  EXPECT_EQ(Ask(*bystander, L"y"), L"0:y");
  EXPECT_TRUE(echo.dropped->WaitFor(1000));
  const auto last = OpenClient(echo.name);
  EXPECT_EQ(Ask(*last, L"z"), L"1001:z");
  EXPECT_EQ(echo.dropped->Ids().size(), 1000U);
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
