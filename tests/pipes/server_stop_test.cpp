// How a server stops, from outside and from its own callbacks.
#include "tests/pipes/pipe_fixture.h"
#include "tests/support/process_resources.h"

#include <future>
#include <mutex>

namespace Zelto::Utilities {
namespace {

using testing::ElementsAre;

constexpr std::chrono::seconds kPrompt{1};

TEST(PipeServer, StopsPromptlyWhateverItsClientsDo) {
  const EchoServer echo;
  echo.Start();
  const auto idle = OpenClient(echo.name);
  EXPECT_EQ(Ask(*idle, L"x"), L"0:x");
  const auto never_reads = OpenClient(echo.name);
  StopReading(*never_reads);
  EXPECT_EQ(Ask(*idle, L"still there"), L"0:still there");
  const auto start = Clock::now();
  echo.server->Stop();
  EXPECT_LT(Clock::now() - start, kPrompt);
  EXPECT_THAT(echo.dropped->Ids(), ElementsAre());
}

TEST(PipeServer, MayBeStoppedByItsOwnCallbacks) {
  enum class Place {
    Message,
    Dropped,
    Authentication
  };
  for (const Place place : {Place::Message, Place::Dropped, Place::Authentication}) {
    for (const bool release : {false, true}) {
      SCOPED_TRACE(testing::Message() << static_cast<int>(place) << (release ? " releases" : " stops"));
      std::promise<void> stopped;
      std::shared_ptr<MultiClientNamedPipeServer> server;
      std::mutex mutex;  // the test waits until the callback is done with `server`
      const auto stop = [&](Place here) {
        const std::lock_guard guard(mutex);
        if (here != place || !server) {
          return;
        }
        if (release) {
          server.reset();
        } else {
          server->Stop();
        }
        stopped.set_value();
      };
      const std::wstring name = UniquePipeName();
      {
        const std::lock_guard guard(mutex);
        server = MakeServer(
            name,
            [&](unsigned int, const std::wstring& message) {
              stop(Place::Message);
              return message;
            },
            [&](unsigned int) { stop(Place::Dropped); });
        server->Start([&](const SharedHandle&, bool) {
          stop(Place::Authentication);
          return true;
        });
      }
      if (place == Place::Authentication) {
        try {
          OpenClient(name);
        } catch (const Win32Exception&) {  // the server may be gone before the client has opened its end
        }
      } else {
        const auto client = OpenClient(name);
        client->WriteMessage(L"x", false).wait();
        client->SetTimeout(500);
        client->ReadMessage().wait();
      }
      ASSERT_EQ(stopped.get_future().wait_for(kLimit), std::future_status::ready);
      const std::lock_guard guard(mutex);
      if (server) {
        EXPECT_FALSE(server->IsStarted());
        server->Stop();  // waits for what the callback could not wait for
      }
    }
  }
}

TEST(PipeServer, StoppedByACallbackItTakesNoClients) {
  const std::wstring name = UniquePipeName();
  MultiClientNamedPipeServer* self = nullptr;
  const auto server = MakeServer(name, [&](unsigned int, const std::wstring& message) {
    self->Stop();
    return message;
  });
  self = server.get();
  server->Start({});
  OpenClient(name)->WriteMessage(L"stop").get();
  EXPECT_TRUE(Eventually([&] {
    SharedHandle pipe;
    return Platform::OpenPipe(server->GetPipeName(), pipe) != Platform::kSuccess;
  }));
  server->Start({});
  EXPECT_NO_THROW(OpenClient(name));
}

TEST(PipeServer, RestartedOnlyByItsCallbacksItKeepsNothingOfEarlierRuns) {
  const std::wstring name = UniquePipeName();
  MultiClientNamedPipeServer* self = nullptr;
  Counter restarts;
  const auto server = MakeServer(name, [&](unsigned int, const std::wstring& message) {
    self->Stop();
    self->Start({});
    restarts.Add();
    return message;
  });
  self = server.get();
  server->Start({});
  std::size_t before = 0;
  for (int round = 1; round <= 16; ++round) {  // each takes half a second under Wine
    // A client may still meet the run that ends.
    ASSERT_TRUE(Eventually([&] {
      try {
        OpenClient(name)->WriteMessage(L"again").get();
      } catch (const Win32Exception&) {
      }
      return restarts.WaitFor(round, std::chrono::milliseconds(200));
    }));
    before = round == 4 ? Testing::CountProcessResources().handles : before;
  }
  EXPECT_TRUE(Eventually([&] { return Testing::CountProcessResources().handles <= before + 10; }));
}

TEST(PipeServer, WaitsForCallbacksThatRun) {
  std::promise<void> entered;
  std::promise<void> release;
  std::atomic<bool> left = false;
  const std::wstring name = UniquePipeName();
  const auto server = MakeServer(name, [&](unsigned int, const std::wstring&) {
    entered.set_value();
    release.get_future().wait();
    left = true;
    return std::wstring(L"late");
  });
  server->Start({});
  const auto client = OpenClient(name);
  client->WriteMessage(L"x").get();
  ASSERT_EQ(entered.get_future().wait_for(kLimit), std::future_status::ready);
  auto stopping = std::async(std::launch::async, [&] {
    server->Stop();
    EXPECT_TRUE(left);
    return Clock::now();
  });
  EXPECT_TRUE(Eventually([&] { return !server->IsStarted(); }));
  const auto released = Clock::now();
  release.set_value();
  EXPECT_LT(stopping.get() - released, kPrompt);
}

TEST(PipeServer, StopReachesClientsThatWaitForTheirJudgement) {
  const EchoServer echo;
  std::promise<void> entered;
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  echo.Start([&](const SharedHandle&, bool) {
    entered.set_value();
    released.wait();
    return true;
  });
  const auto judged = OpenClient(echo.name);
  ASSERT_EQ(entered.get_future().wait_for(kLimit), std::future_status::ready);
  const auto waiting = OpenClient(echo.name);
  auto stopping = std::async(std::launch::async, [&] { echo.server->Stop(); });
  EXPECT_TRUE(Eventually([&] { return !echo.server->IsStarted(); }));
  release.set_value();
  stopping.get();
  for (const auto& client : {judged, waiting}) {
    ExpectWin32Failure([&] { client->WriteMessage(L"x").get(); }, "Disconnected", 233);
  }
}

}  // namespace
}  // namespace Zelto::Utilities
