#include "tests/pipes/pipe_fixture.h"
#include "tests/support/process_resources.h"

#include <future>
#include <optional>
#include <stdexcept>
#include <thread>

namespace Zelto::Utilities {
namespace {

constexpr const char* kClosed = "Pipe already closed";
constexpr const char* kReadTimeout = "Timeout expired while reading from named pipe";

std::string FullName(const std::wstring& name) {
  return "\\\\.\\pipe\\" + std::string(name.begin(), name.end());
}

/// Writes with nobody reading until the pipe takes no more. @return messages that were taken
int Fill(AsyncNamedPipeClient& client, const std::wstring& message) {
  int taken = 0;
  client.SetTimeout(200);
  ExpectFailure(
      [&] {
        for (; taken < 100000; ++taken) {
          client.WriteMessage(message).get();
        }
      },
      "Timeout 200 expired while writing to named pipe");
  client.SetTimeout(kLimitMs);
  return taken;
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
  ExpectFailure([&] { client.ReadMessage().get(); }, kClosed);
}

TEST(PipeClient, GivesUpOnAPipeThatStaysBusy) {
  const std::wstring name = UniquePipeName();
  const BareEnd server = BareEnd::Listen(name, 1);
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
  AsyncNamedPipeClient client(UniquePipeName());
  const auto expect_closed = [&client] {
    ExpectFailure([&] { client.ReadMessage().get(); }, kClosed);
    ExpectFailure([&] { client.WriteMessage(L"x").get(); }, kClosed);
    ExpectFailure([&] { client.WriteMessage(L"x", false).get(); }, kClosed);
  };
  expect_closed();
  client.Close();
  const EchoServer echo;
  echo.Start();
  const auto opened = OpenClient(echo.name);
  opened->Close();
  ExpectFailure([&] { opened->ReadMessage().get(); }, kClosed);
  EXPECT_TRUE(echo.dropped->WaitFor(1));
  opened->Open();
  EXPECT_EQ(Ask(*opened, L"again"), L"1:again");
}

TEST(PipeClient, AsksTheCallbackOncePerConnection) {
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
  EXPECT_THROW(PipePeerIdentity::Of(SharedHandle(), false), Win32Exception);
}

TEST(PipeClient, LetsGoOfAServerThatTheCallbackRefuses) {
  const DiagnosticsRecorder diagnostics;
  for (const bool throws : {false, true}) {
    const std::wstring name = UniquePipeName();
    BareEnd server = BareEnd::Listen(name);
    AsyncNamedPipeClient client(name);
    client.SetAuthenticatePipe([throws](const SharedHandle&, bool) -> bool {
      return throws ? throw std::runtime_error("no certificate") : false;
    });
    ExpectWin32Failure([&] { client.Open(); }, "Error opening named pipe: " + FullName(name) + ". Signature is invalid",
                       191);
    EXPECT_FALSE(client.IsInitialized());
    ExpectFailure([&] { client.WriteMessage(L"secret").get(); }, kClosed);
    server.Accept();
    EXPECT_NE(server.Read().first, Platform::kSuccess);  // the client is gone and has sent nothing
    client.SetAuthenticatePipe({});
    BareEnd second = BareEnd::Listen(name);
    client.Open();
    EXPECT_TRUE(client.IsInitialized());
  }
  EXPECT_TRUE(diagnostics.Heard(L"no certificate"));
}

TEST(PipeClient, UsesAHandleThatItIsGiven) {
  const EchoServer echo;
  echo.Start();
  AsyncNamedPipeClient client(UniquePipeName());
  client.SetAuthenticatePipe([](const SharedHandle&, bool) { return false; });
  client.Open(BareEnd::Open(echo.name).pipe);
  EXPECT_TRUE(client.IsInitialized());
  EXPECT_EQ(Ask(client, L"hello"), L"0:hello");
}

TEST(PipeClient, TimesOutAndGoesOn) {
  BareServerAndClient pair;
  pair.client->SetTimeout(50);
  ExpectFailure([&] { pair.client->ReadMessage().get(); }, kReadTimeout);
  EXPECT_EQ(pair.server.Write("late"), Platform::kSuccess);
  pair.client->SetTimeout(kLimitMs);
  EXPECT_EQ(pair.client->ReadMessage().get(), L"late");
  const int taken = Fill(*pair.client, std::wstring(60000, L'f'));
  for (int i = 0; i < taken; ++i) {
    ASSERT_EQ(pair.server.Read().second.size(), 60000U);
  }
  pair.client->WriteMessage(L"after").get();
  EXPECT_EQ(pair.server.Read().second, "after");
}

TEST(PipeClient, TellsThatTheServerHasGone) {
  {
    BareServerAndClient pair;
    const auto reading = pair.client->ReadMessage();
    (void)reading.is_done();
    Platform::DisconnectPipe(pair.server.pipe);
    ExpectWin32Failure([&] { reading.get(); }, "Error reading from named pipe", Platform::kPipeNotConnected);
    ExpectWin32Failure([&] { pair.client->WriteMessage(L"x").get(); }, "Disconnected", 233);
    ExpectWin32Failure([&] { pair.client->WriteMessage(L"x", false).get(); }, "Disconnected", 233);
  }
  BareServerAndClient pair;
  Fill(*pair.client, std::wstring(60000, L'f'));
  const auto writing = pair.client->WriteMessage(std::wstring(60000, L'p'));
  (void)writing.is_done();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // gives the write time to begin; either way it fails
  Platform::DisconnectPipe(pair.server.pipe);
  try {
    writing.get();
    ADD_FAILURE() << "written to nobody";
  } catch (const Win32Exception& error) {
    // 997 for a write that had begun; 233 if it came too late.
    EXPECT_THAT(error.GetErrorCode(), testing::AnyOf(997U, 233U));
  }
}

TEST(PipeClient, DetachedWritesArriveInOrderWhoeverEnds) {
  BareServerAndClient pair;
  const int taken = Fill(*pair.client, std::wstring(60000, L'f'));
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
    ASSERT_EQ(pair.server.Read().second.size(), 60000U);
  }
  for (int i = 0; i < kDetached; ++i) {
    const std::string number = std::to_string(i);
    ASSERT_EQ(pair.server.Read().second, number + std::string(50000, 'd'));
  }
  EXPECT_EQ(pair.server.Read().second, "last");
  EXPECT_NE(pair.server.Read().first, Platform::kSuccess);  // nobody holds the client's end any more
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
  EXPECT_EQ(pair.server.Read().second, "farewell");
  EXPECT_EQ(pair.server.Read().second, "kept");

  BareServerAndClient stalled;
  Fill(*stalled.client, std::wstring(60000, L'f'));
  stalled.client->WriteMessage(std::wstring(60000, L'd'), false).get();
  stalled.client->SetTimeout(100);
  const auto start = Clock::now();
  stalled.client->Close();  // the pending write is cancelled after the time-out
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
  ExpectFailure([&] { stalled.client->ReadMessage().get(); }, kClosed);
}

TEST(PipeClient, TasksOutliveIt) {
  BareServerAndClient pair;
  auto reading = pair.client->ReadMessage();
  pair.client.reset();
  EXPECT_EQ(pair.server.Write("to nobody's client"), Platform::kSuccess);
  EXPECT_EQ(reading.get(), L"to nobody's client");
  EXPECT_NE(pair.server.Read().first, Platform::kSuccess);  // the last task let go of the pipe

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
