#include "tests/pipes/pipe_fixture.h"
#include "tests/support/process_resources.h"

#include <future>
#include <stdexcept>
#include <thread>

namespace Zelto::Utilities {
namespace {

constexpr const char* kClosed = "Pipe already closed";
constexpr const char* kReadTimeout = "Timeout expired while reading from named pipe";

std::string FullName(const std::wstring& name) {
  return "\\\\.\\pipe\\" + std::string(name.begin(), name.end());
}

TEST(PipeClient, HasItsDefaultsAndRefusesAnEmptyName) {
  const AsyncNamedPipeClient client(L"name", 0);
  EXPECT_EQ(client.GetTimeout(), 5000U);
  EXPECT_EQ(client.GetEncoding(), Encoding::Utf8);
  EXPECT_FALSE(client.IsInitialized());
  ExpectFailure([] { AsyncNamedPipeClient(L"", 0); }, "Named pipe name should not be empty");
}

TEST(PipeClient, GivesUpAfterFiveAttempts) {
  const std::wstring name = UniquePipeName();
  AsyncNamedPipeClient client(L"\\\\.\\pipe\\" + name);
  const auto start = Clock::now();
  ExpectWin32Failure([&] { client.Open(); }, "Failed to connect to the pipe: " + FullName(name), 2);
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(1000));
  EXPECT_FALSE(client.IsInitialized());
}

TEST(PipeClient, GivesUpOnAPipeThatStaysBusy) {
  const std::wstring name = UniquePipeName();
  const SharedHandle server = Listen(name, 1);
  std::vector<std::shared_ptr<AsyncNamedPipeClient>> clients;
  // The first gets the instance; a system may queue a few more.
  ExpectWin32Failure(
      [&] {
        while (clients.size() < 10) {
          clients.push_back(std::make_shared<AsyncNamedPipeClient>(name, 50));
          clients.back()->Open();
        }
      },
      "Failed to connect to the pipe: " + FullName(name), Platform::kPipeBusy);
  EXPECT_GE(clients.size(), 2U);
  EXPECT_FALSE(clients.back()->IsInitialized());
}

TEST(PipeClient, WithoutAnOpenPipeEveryTaskSaysSo) {
  const EchoServer echo;
  echo.Start();
  AsyncNamedPipeClient client(echo.name);
  for (unsigned int id = 0; id < 2; ++id) {
    client.Close();
    ExpectFailure([&] { client.ReadMessage().get(); }, kClosed);
    ExpectFailure([&] { client.WriteMessage(L"x").get(); }, kClosed);
    ExpectFailure([&] { client.WriteMessage(L"x", false).get(); }, kClosed);
    EXPECT_TRUE(echo.dropped->WaitFor(id));
    client.Open();
    EXPECT_EQ(Ask(client, L"again"), std::to_wstring(id) + L":again");
  }
}

TEST(PipeClient, AsksTheCallbackOncePerConnectionOfItsOwn) {
  const EchoServer echo;
  echo.Start();
  AsyncNamedPipeClient client(echo.name);
  int asked = 0;
  client.SetAuthenticatePipe([&](const SharedHandle& pipe, bool server_side) {
    ++asked;
    EXPECT_FALSE(server_side);
    EXPECT_EQ(PipePeerIdentity::Of(pipe, server_side).process_id, Platform::CurrentProcessId());
    return true;
  });
  client.Open();
  client.Open();
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(Ask(client, L"hello"), L"0:hello");
  client.Close();
  client.Open();
  EXPECT_EQ(asked, 2);
  client.Close();
  EXPECT_TRUE(echo.dropped->WaitFor(2));
  client.Open(OpenBare(echo.name));  // a handle from elsewhere is its owner's affair
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(Ask(client, L"hello"), L"2:hello");
  EXPECT_THROW(PipePeerIdentity::Of(SharedHandle(), false), Win32Exception);
}

TEST(PipeClient, LetsGoOfAServerThatTheCallbackRefuses) {
  const DiagnosticsRecorder diagnostics;
  for (const bool throws : {false, true}) {
    const std::wstring name = UniquePipeName();
    const SharedHandle server = Listen(name);
    AsyncNamedPipeClient client(name);
    client.SetAuthenticatePipe([throws](const SharedHandle&, bool) -> bool {
      return throws ? throw std::runtime_error("no certificate") : false;
    });
    ExpectWin32Failure([&] { client.Open(); }, "Error opening named pipe: " + FullName(name) + ". Signature is invalid",
                       191);
    EXPECT_FALSE(client.IsInitialized());
    ExpectFailure([&] { client.WriteMessage(L"secret").get(); }, kClosed);
    EXPECT_EQ(Connect(server), Platform::kSuccess);
    EXPECT_NE(Read(server).code, Platform::kSuccess);  // the client is gone and has sent nothing
    client.SetAuthenticatePipe({});
    const SharedHandle second = Listen(name);
    client.Open();
    EXPECT_TRUE(client.IsInitialized());
  }
  EXPECT_TRUE(diagnostics.Heard(L"no certificate"));
}

TEST(PipeClient, TimesOutAndGoesOn) {
  BareServerAndClient pair;
  pair.client->SetTimeout(50);
  ExpectFailure([&] { pair.client->ReadMessage().get(); }, kReadTimeout);
  EXPECT_EQ(Write(pair.server, "late"), Platform::kSuccess);
  pair.client->SetTimeout(kLimitMs);
  EXPECT_EQ(pair.client->ReadMessage().get(), L"late");
  const int taken = Fill(*pair.client);
  for (int i = 0; i < taken; ++i) {
    ASSERT_EQ(Read(pair.server).text.size(), 60000U);
  }
  pair.client->WriteMessage(L"after").get();
  EXPECT_EQ(Read(pair.server).text, "after");
}

// An answer may come just when the look for it ends.
TEST(PipeClient, MayPollWithoutLosingAnAnswer) {
  const EchoServer echo;
  echo.Start();
  const auto client = OpenClient(echo.name);
  for (int i = 0; i < 200; ++i) {
    client->SetTimeout(kLimitMs);
    client->WriteMessage(std::to_wstring(i)).get();
    client->SetTimeout(0);
    std::wstring answer;
    ASSERT_TRUE(Eventually([&] {
      try {
        answer = client->ReadMessage().get();
      } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), kReadTimeout);
      }
      return !answer.empty();
    }));
    ASSERT_EQ(answer, L"0:" + std::to_wstring(i));
  }
}

TEST(PipeClient, TellsThatTheServerHasGone) {
  {
    BareServerAndClient pair;
    const auto reading = pair.client->ReadMessage();
    (void)reading.is_done();
    Platform::DisconnectPipe(pair.server);
    ExpectWin32Failure([&] { reading.get(); }, "Error reading from named pipe", Platform::kPipeNotConnected);
    ExpectWin32Failure([&] { pair.client->WriteMessage(L"x").get(); }, "Disconnected", 233);
    ExpectWin32Failure([&] { pair.client->WriteMessage(L"x", false).get(); }, "Disconnected", 233);
  }
  BareServerAndClient pair;
  Fill(*pair.client);
  const auto writing = pair.client->WriteMessage(std::wstring(60000, L'p'));
  (void)writing.is_done();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // gives the write time to begin; either way it fails
  Platform::DisconnectPipe(pair.server);
  // 997 for a write that had begun; 233 if it came too late.
  EXPECT_THAT([&] { writing.get(); }, testing::Throws<Win32Exception>(
                                          testing::Property(&Win32Exception::GetErrorCode, testing::AnyOf(997, 233))));
}

TEST(PipeClient, DetachedWritesArriveInOrderWhoeverEnds) {
  BareServerAndClient pair;
  const int taken = Fill(*pair.client);
  const auto threads_before = Testing::CountProcessResources().threads;
  constexpr int kDetached = 100;
  for (int i = 0; i < kDetached; ++i) {
    // Each write is pending, and its thread ends at once.
    std::thread([&, i] { pair.client->WriteMessage(std::to_wstring(i) + std::wstring(50000, L'd'), false); }).join();
  }
  pair.client->WriteMessage(L"last", false).get();
  EXPECT_LE(Testing::CountProcessResources().threads, threads_before + 10);
  pair.client.reset();
  for (int i = 0; i < taken; ++i) {
    ASSERT_EQ(Read(pair.server).text.size(), 60000U);
  }
  for (int i = 0; i < kDetached; ++i) {
    const std::string number = std::to_string(i);
    ASSERT_EQ(Read(pair.server).text, number + std::string(50000, 'd'));
  }
  EXPECT_EQ(Read(pair.server).text, "last");
  EXPECT_NE(Read(pair.server).code, Platform::kSuccess);  // nobody holds the client's end any more
}

TEST(PipeClient, AWriteThatNobodyWaitsForNeedsNoTime) {
  const EchoServer echo;
  echo.Start();
  for (int i = 0; i < 50; ++i) {
    const auto client = OpenClient(echo.name, 1);
    client->SetTimeout(0);
    EXPECT_NO_THROW(client->WriteMessage(L"x", false).get());
    client->SetTimeout(kLimitMs);
    EXPECT_EQ(client->ReadMessage().get(), std::to_wstring(i) + L":x");
  }
}

TEST(PipeClient, CloseSendsWhatWasWrittenAndEndsWhatWaits) {
  BareServerAndClient pair;
  pair.client->WriteMessage(L"farewell", false);
  const auto unread = pair.client->ReadMessage();
  const auto kept = pair.client->WriteMessage(L"kept");
  pair.client->SetTimeout(100);
  pair.client->Close();
  EXPECT_TRUE(kept.is_done());
  EXPECT_EQ(Read(pair.server).text, "farewell");
  EXPECT_EQ(Read(pair.server).text, "kept");

  BareServerAndClient stalled;
  const int taken = Fill(*stalled.client);
  stalled.client->WriteMessage(std::wstring(60000, L'd'), false).get();
  stalled.client->SetTimeout(100);
  const auto start = Clock::now();
  stalled.client->Close();  // the pending write is cancelled after the time-out
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
  for (int i = 0; i < taken; ++i) {
    ASSERT_EQ(Read(stalled.server).text.size(), 60000U);
  }
  EXPECT_NE(Read(stalled.server).code, Platform::kSuccess);
}

TEST(PipeClient, TasksOutliveIt) {
  BareServerAndClient pair;
  auto reading = pair.client->ReadMessage();
  pair.client.reset();
  EXPECT_EQ(Write(pair.server, "to nobody's client"), Platform::kSuccess);
  EXPECT_EQ(reading.get(), L"to nobody's client");
  EXPECT_NE(Read(pair.server).code, Platform::kSuccess);  // the last task let go of the pipe

  BareServerAndClient quiet(100);
  reading = quiet.client->ReadMessage();
  (void)reading.is_done();
  quiet.client.reset();
  ExpectFailure([&] { reading.get(); }, kReadTimeout);
}

TEST(PipeClient, ContinuationsMayAskOn) {
  const EchoServer echo;
  echo.Start();
  const auto client = OpenClient(echo.name);
  client->WriteMessage(L"one");
  const auto chained =
      client->ReadMessage().then([client](const std::wstring& answer) { return Ask(*client, answer); });
  EXPECT_EQ(chained.get(), L"0:0:one");
}

}  // namespace
}  // namespace Zelto::Utilities
