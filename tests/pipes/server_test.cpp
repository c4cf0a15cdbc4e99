#include "tests/pipes/pipe_fixture.h"

#include <functional>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace Zelto::Utilities {
namespace {

using testing::ElementsAre;

/// Opens a client whose server must end the connection.
void ExpectDropped(AsyncNamedPipeClient& client) {
  EXPECT_THROW(client.ReadMessage().get(), Win32Exception);
}

TEST(PipeServer, NumbersItsClientsAndHearsThemLeave) {
  std::mutex mutex;
  std::vector<std::thread::id> threads;  // of the message callback, then of the dropped callback
  const auto note_thread = [&] {
    const std::lock_guard guard(mutex);
    threads.push_back(std::this_thread::get_id());
  };
  Counter dropped;
  const std::wstring name = UniquePipeName();
  const auto server = MakeServer(
      name,
      [&](unsigned int id, const std::wstring&) {
        note_thread();
        return std::to_wstring(id);
      },
      [&](unsigned int id) {
        note_thread();
        dropped.Add(id);
      });
  EXPECT_EQ(server->GetPipeName(), L"\\\\.\\pipe\\" + name);
  server->Stop();
  EXPECT_FALSE(server->IsStarted());
  for (int round = 0; round < 2; ++round) {
    server->Start({});
    server->Start({});
    EXPECT_TRUE(server->IsStarted());
    auto first = OpenClient(name);
    EXPECT_EQ(Ask(*first, L"?"), std::to_wstring(2 * round));
    auto second = OpenClient(name);
    EXPECT_EQ(Ask(*second, L"?"), std::to_wstring(2 * round + 1));
    first.reset();
    EXPECT_TRUE(dropped.WaitFor(static_cast<std::size_t>(round) + 1));
    server->Stop();  // the second client does not count as gone
    server->Stop();
    EXPECT_FALSE(server->IsStarted());
    ExpectDropped(*second);
  }
  EXPECT_THAT(dropped.Ids(), ElementsAre(0, 2));
  ASSERT_EQ(threads.size(), 6U);
  EXPECT_EQ(threads[0], threads[2]);
  EXPECT_THROW(MakeServer(L"", {}), std::runtime_error);
}

TEST(PipeServer, AnswersOnlyWhatIsNotEmptyAndTakesANewCallback) {
  const EchoServer echo;
  echo.server->SetReceiveCallBack([](unsigned int, const std::wstring& message) {
    return message == L"quiet" ? std::wstring() : L"old " + message;
  });
  echo.Start();
  const auto client = OpenClient(echo.name);
  client->WriteMessage(L"quiet").get();
  client->WriteMessage(L"").get();  // asks nobody
  EXPECT_EQ(Ask(*client, L"loud"), L"old loud");
  echo.server->SetReceiveCallBack([](unsigned int, const std::wstring& message) { return L"new " + message; });
  EXPECT_EQ(Ask(*client, L"one"), L"new one");
  EXPECT_EQ(Ask(*OpenClient(echo.name), L"two"), L"new two");
  echo.server->SetReceiveCallBack({});
  EXPECT_EQ(echo.server->CallMessageReceivedCallback(7, L"x"), L"");
}

TEST(PipeServer, RefusesWhomTheCallbackRefuses) {
  const DiagnosticsRecorder diagnostics;
  const EchoServer echo;
  std::atomic<int> asked = 0;
  echo.Start([&asked](const SharedHandle& pipe, bool server_side) -> bool {
    EXPECT_TRUE(server_side);
    EXPECT_EQ(PipePeerIdentity::Of(pipe, server_side).process_id, Platform::CurrentProcessId());
    switch (asked++) {
      case 0:
        return false;
      case 1:
        throw std::runtime_error("no such certificate");
      default:
        return true;
    }
  });
  for (int refused = 0; refused < 2; ++refused) {
    const auto client = OpenClient(echo.name);
    ExpectDropped(*client);
  }
  EXPECT_EQ(Ask(*OpenClient(echo.name), L"friend"), L"0:friend");
  EXPECT_TRUE(diagnostics.Heard(L"no such certificate"));
  EXPECT_TRUE(echo.dropped->WaitFor(1));
  EXPECT_THAT(echo.dropped->Ids(), ElementsAre(0));
}

TEST(PipeServer, SurvivesItsClients) {
  struct Case {
    const char* name;
    std::function<void(const EchoServer&)> misbehave;
    const wchar_t* told;
  };
  const Case cases[] = {
      {"connects and vanishes", [](const EchoServer& echo) { OpenBare(echo.name); }, nullptr},
      {"writes and vanishes",
       [](const EchoServer& echo) { EXPECT_EQ(Write(OpenBare(echo.name), "farewell"), Platform::kSuccess); }, nullptr},
      {"sends invalid UTF-8",
       [](const EchoServer& echo) {
         const SharedHandle client = OpenBare(echo.name);
         EXPECT_EQ(Write(client, "\xC3\x28"), Platform::kSuccess);
         EXPECT_NE(Read(client).code, Platform::kSuccess);
       },
       L"Exception reading data from client: bad conversion"},
      {"makes the callback throw",
       [](const EchoServer& echo) {
         const auto client = OpenClient(echo.name);
         client->WriteMessage(L"throw").get();
         ExpectDropped(*client);
       },
       L"as asked"},
      {"makes the answer unfit",
       [](const EchoServer& echo) {
         const auto client = OpenClient(echo.name);
         client->WriteMessage(L"unfit").get();
         ExpectDropped(*client);
       },
       L"Exception writing data to the client : bad conversion"},
      {"exceeds the size limit",
       [](const EchoServer& echo) {
         const auto client = OpenClient(echo.name);
         client->WriteMessage(std::wstring(100001, L'x'), false);
         ExpectDropped(*client);
       },
       L"Message exceeds the maximum size"},
  };
  const EchoServer echo;
  echo.server->SetMaximumMessageSize(100000);
  Counter farewells;
  echo.server->SetReceiveCallBack([&farewells](unsigned int, const std::wstring& message) {
    if (message == L"farewell") {
      farewells.Add();
    }
    if (message == L"throw") {
      throw std::runtime_error("as asked");
    }
    return message == L"unfit" ? std::wstring(L"\xD800") : message;
  });
  echo.Start();
  const auto bystander = OpenClient(echo.name);
  EXPECT_EQ(Ask(*bystander, L"first"), L"first");
  std::size_t gone = 0;
  for (const Case& way : cases) {
    SCOPED_TRACE(way.name);
    const DiagnosticsRecorder diagnostics;
    way.misbehave(echo);
    EXPECT_TRUE(echo.dropped->WaitFor(++gone));
    EXPECT_TRUE(way.told == nullptr || diagnostics.Heard(way.told));
    EXPECT_EQ(Ask(*bystander, std::wstring(50000, L'b')), std::wstring(50000, L'b'));
    EXPECT_EQ(Ask(*OpenClient(echo.name), L"newcomer"), L"newcomer");
    EXPECT_TRUE(echo.dropped->WaitFor(++gone));
  }
  EXPECT_EQ(echo.dropped->Ids().size(), gone);
  EXPECT_EQ(farewells.Value(), 1);
}

TEST(PipeServer, SurvivesItsDroppedCallback) {
  const std::pair<ClientDroppedCallback, const wchar_t*> cases[] = {
      {nullptr, L"bad_function_call"},
      {[](unsigned int) { throw std::runtime_error("cannot forget"); }, L"cannot forget"},
  };
  for (const auto& [callback, told] : cases) {
    const DiagnosticsRecorder diagnostics;
    const std::wstring name = UniquePipeName();
    const auto server = MakeServer(
        name, [](unsigned int id, const std::wstring&) { return std::to_wstring(id); }, callback);
    server->Start({});
    OpenClient(name).reset();
    EXPECT_TRUE(diagnostics.Heard(told));
    EXPECT_EQ(Ask(*OpenClient(name), L"?"), L"1");
  }
  EXPECT_THROW(MakeServer(L"x", {}, nullptr)->CallClientDroppedCallback(0), std::bad_function_call);
}

TEST(PipeServer, GivesUpAnAnswerThatIsNotTaken) {
  const EchoServer echo;
  echo.Start();
  const auto never_reads = OpenClient(echo.name);
  Fill(*never_reads);
  EXPECT_TRUE(echo.dropped->WaitFor(1, std::chrono::seconds(20)));  // ten seconds later
  EXPECT_EQ(Ask(*OpenClient(echo.name), L"next"), L"1:next");
}

TEST(PipeServer, KeepsTryingToListen) {
  const DiagnosticsRecorder diagnostics;
  const EchoServer echo;
  SharedHandle occupant = Listen(echo.name, 1);  // allows no second instance
  echo.Start();
  EXPECT_TRUE(diagnostics.Heard(L"Can't create named pipe"));
  occupant.Reset();
  OpenBare(echo.name);  // waits until there is a server
  EXPECT_TRUE(echo.dropped->WaitFor(1));
  EXPECT_EQ(Ask(*OpenClient(echo.name), L"x"), L"1:x");
}

}  // namespace
}  // namespace Zelto::Utilities
