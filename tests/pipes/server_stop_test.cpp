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
  Fill(*never_reads);  // until the server's answer is stuck, and it reads no more, either
  EXPECT_EQ(Ask(*idle, L"still there"), L"0:still there");
  const auto start = Clock::now();
  echo.server->Stop();
  EXPECT_LT(Clock::now() - start, kPrompt);
  EXPECT_THAT(echo.dropped->Ids(), ElementsAre());
}

TEST(PipeServer, MayBeStoppedByItsOwnCallbacks) {
  using namespace std::string_literals;
  for (const std::string& place : {"message"s, "dropped"s, "authentication"s}) {
    for (const bool release : {false, true}) {
      SCOPED_TRACE(place + (release ? " releases" : " stops"));
      Counter stopped;
      std::shared_ptr<MultiClientNamedPipeServer> server;
      std::mutex mutex;  // the test waits until the callback is done with `server`
      const auto stop = [&](const std::string& here) {
        const std::lock_guard guard(mutex);
        if (here != place || !server) {
          return;
        }
        if (release) {
          server.reset();
        } else {
          server->Stop();
        }
        stopped.Add();
      };
      const std::wstring name = UniquePipeName();
      {
        const std::lock_guard guard(mutex);
        server = MakeServer(
            name,
            [&](unsigned int, const std::wstring& message) {
              stop("message");
              return message;
            },
            [&](unsigned int) { stop("dropped"); });
        server->Start([&](const SharedHandle&, bool) {
          stop("authentication");
          return true;
        });
      }
      try {
        const auto client = OpenClient(name);
        client->WriteMessage(L"x", false).wait();
        client->SetTimeout(500);
        client->ReadMessage().wait();
      } catch (const Win32Exception&) {  // the server may be gone before the client has opened its end
      }
      ASSERT_TRUE(stopped.WaitFor(1));
      const std::lock_guard guard(mutex);
      if (server) {
        EXPECT_FALSE(server->IsStarted());
        server->Stop();  // waits for what the callback could not wait for
      }
    }
  }
}

TEST(PipeServer, MayBeStoppedInsideAnothersCallbackInsideItsOwn) {
  Counter inside;
  const EchoServer outer;
  const EchoServer inner;
  inner.server->SetReceiveCallBack([&](unsigned int, const std::wstring& message) {
    outer.server->Stop();
    return message;
  });
  outer.server->SetReceiveCallBack([&](unsigned int id, const std::wstring& message) {
    inside.Add();
    EXPECT_TRUE(inside.WaitFor(2));  // two threads that must not wait for each other
    return inner.server->CallMessageReceivedCallback(id, message);
  });
  outer.Start();
  for (int client = 0; client < 2; ++client) {
    OpenClient(outer.name)->WriteMessage(L"x").get();
  }
  EXPECT_TRUE(inside.WaitFor(2));
  outer.server->Stop();
}

TEST(PipeServer, StoppedByACallbackItTakesNoClients) {
  const EchoServer echo;
  echo.server->SetReceiveCallBack([&](unsigned int, const std::wstring& message) {
    echo.server->Stop();
    return message;
  });
  echo.Start();
  OpenClient(echo.name)->WriteMessage(L"stop").get();
  EXPECT_TRUE(Eventually([&] {
    SharedHandle pipe;
    return Platform::OpenPipe(echo.server->GetPipeName(), pipe) != Platform::kSuccess;
  }));
  echo.Start();
  EXPECT_NO_THROW(OpenClient(echo.name));
}

TEST(PipeServer, RestartedOnlyByItsCallbacksItKeepsNothingOfEarlierRuns) {
  Counter restarts;
  const EchoServer echo;
  echo.server->SetReceiveCallBack([&](unsigned int, const std::wstring& message) {
    echo.server->Stop();
    echo.Start();
    restarts.Add();
    return message;
  });
  echo.Start();
  std::size_t before = 0;
  for (int round = 1; round <= 16; ++round) {  // each takes half a second under Wine
    // A client may still meet the run that ends.
    ASSERT_TRUE(Eventually([&] {
      try {
        OpenClient(echo.name)->WriteMessage(L"again").get();
      } catch (const Win32Exception&) {
      }
      return restarts.WaitFor(round, std::chrono::milliseconds(200));
    }));
    before = round == 4 ? Testing::CountProcessResources().handles : before;
  }
  EXPECT_TRUE(Eventually([&] { return Testing::CountProcessResources().handles <= before + 10; }));
}

TEST(PipeServer, StopWaitsForCallbacksThatRunAndReachesEveryClient) {
  for (const bool judging : {false, true}) {
    Testing::Gate gate;
    const EchoServer echo;
    echo.server->SetReceiveCallBack([&](unsigned int, const std::wstring& message) {
      gate.Pass();
      return message;
    });
    echo.Start([&](const SharedHandle&, bool) {
      if (judging) {
        gate.Pass();
      }
      return true;
    });
    const auto client = OpenClient(echo.name);
    client->WriteMessage(L"x").get();
    ASSERT_TRUE(gate.entered.WaitFor(1));
    const auto waiting = OpenClient(echo.name);
    auto stopping = std::async(std::launch::async, [&] {
      echo.server->Stop();
      EXPECT_EQ(gate.left.Value(), 1);
      return Clock::now();
    });
    EXPECT_TRUE(Eventually([&] { return !echo.server->IsStarted(); }));
    const auto released = Clock::now();
    gate.Open();
    EXPECT_LT(stopping.get() - released, kPrompt);
    for (const auto& each : {client, waiting}) {
      ExpectWin32Failure([&] { each->WriteMessage(L"x").get(); }, "Disconnected", 233);
    }
  }
}

}  // namespace
}  // namespace Zelto::Utilities
