#include "tests/pipes/pipe_fixture.h"
#include "tests/support/child_process.h"

namespace Zelto::Utilities {
namespace {

using Testing::ChildProcess;

constexpr std::chrono::seconds kPrompt{1};

std::string Narrow(const std::wstring& name) {
  return {name.begin(), name.end()};
}

TEST(TwoProcesses, ExchangeMessages) {
  const std::wstring name = UniquePipeName();
  ChildProcess peer("pipe_peer", {"serve", Narrow(name)});
  ASSERT_EQ(peer.ReadLine(), "ready");
  AsyncNamedPipeClient client(name, kLimitMs);
  client.SetAuthenticatePipe([&peer](const SharedHandle& pipe, bool server_side) {
    return PipePeerIdentity::Of(pipe, server_side).process_id == peer.Id();
  });
  client.Open();
  for (const std::size_t length : {1U, 5000000U}) {
    EXPECT_EQ(Ask(client, std::wstring(length, L'm')), L"echo " + std::wstring(length, L'm'));
  }
  peer.CloseInput();
  EXPECT_EQ(peer.Wait(), 0);
  EXPECT_THROW(client.ReadMessage().get(), Win32Exception);
}

TEST(TwoProcesses, AKilledServerEndsTheTasksOfItsClients) {
  const std::wstring name = UniquePipeName();
  ChildProcess peer("pipe_peer", {"serve", Narrow(name)});
  ASSERT_EQ(peer.ReadLine(), "ready");
  const auto client = OpenClient(name);
  client->WriteMessage(L"silence").get();
  const auto reading = client->ReadMessage();
  const auto writing = client->WriteMessage(L"behind the read");
  (void)reading.is_done();
  peer.Kill();
  const auto killed = Clock::now();
  EXPECT_THROW(reading.get(), Win32Exception);
  EXPECT_THROW(writing.get(), Win32Exception);
  EXPECT_LT(Clock::now() - killed, kPrompt);
  ChildProcess successor("pipe_peer", {"serve", Narrow(name)});
  ASSERT_EQ(successor.ReadLine(), "ready");
  client->Close();
  client->Open();
  EXPECT_EQ(Ask(*client, L"again"), L"echo again");
}

TEST(TwoProcesses, AKilledClientCostsItsConnectionOnly) {
  const EchoServer echo;
  std::atomic<unsigned int> peer_id = 0;
  echo.Start([&peer_id](const SharedHandle& pipe, bool server_side) {
    peer_id = PipePeerIdentity::Of(pipe, server_side).process_id;
    return true;
  });
  const auto bystander = OpenClient(echo.name);
  ChildProcess peer("pipe_peer", {"flood", Narrow(echo.name)});
  ASSERT_EQ(peer.ReadLine(), "ready");
  EXPECT_EQ(peer_id, peer.Id());
  peer.Kill();
  EXPECT_TRUE(echo.dropped->WaitFor(1));
  EXPECT_EQ(Ask(*bystander, L"x"), L"0:x");
}

TEST(TwoProcesses, AForeignClientIsServed) {
  const EchoServer echo;
  echo.Start();
  for (int i = 0; i < 3; ++i) {
    ChildProcess foreign("foreign_client", {Narrow(echo.name), "bare"});
    EXPECT_EQ(foreign.ReadLine(), std::to_string(i) + ":bare");
    EXPECT_EQ(foreign.Wait(), 0);
  }
  EXPECT_TRUE(echo.dropped->WaitFor(3));
}

TEST(Module, CanBeLoadedUsedAndUnloadedAndTheProcessEnds) {
  ChildProcess host("plug_in_host", {Narrow(UniquePipeName())});
  EXPECT_EQ(host.Wait(), 0);
}

}  // namespace
}  // namespace Zelto::Utilities
