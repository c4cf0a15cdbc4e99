#include "tests/platform/pipe_support.h"
#include "tests/support/process_resources.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <set>
#include <thread>

namespace Zelto::Platform::Testing {
namespace {

using namespace std::string_literals;
using Zelto::Testing::CountProcessResources;

TEST(Pipes, ServerMayConnectBeforeOrAfterTheClient) {
  for (const bool server_first : {true, false}) {
    const std::wstring name = PipeName("first");
    const SharedHandle server = MakeInstance(name);
    Operation connect(server);
    SharedHandle client;
    std::uint32_t transferred = 0;
    if (server_first) {
      ASSERT_EQ(connect->BeginConnect(), kIoPending);
      EXPECT_EQ(connect->Finish(transferred), kIoIncomplete);
      std::thread opener([&] { EXPECT_EQ(OpenPipe(name, client), kSuccess); });
      EXPECT_EQ(connect.Outcome(kIoPending, transferred), kSuccess);
      opener.join();
    } else {
      EXPECT_EQ(OpenPipe(name, client), kSuccess);
      EXPECT_EQ(Write(client, "early"), kSuccess) << "a client need not wait to be taken";
      EXPECT_EQ(connect->BeginConnect(), kPipeConnected);
      EXPECT_EQ(Read(server).text, "early");
    }
    EXPECT_EQ(Write(server, "hello"), kSuccess);
    EXPECT_EQ(Read(client).text, "hello");
  }
}

TEST(Pipes, ConnectCanBeCancelledAndBegunAgain) {
  const std::wstring name = PipeName("cancel-connect");
  const SharedHandle server = MakeInstance(name);
  Operation connect(server);
  std::uint32_t transferred = 0;
  EXPECT_EQ(connect->Cancel(), kNotFound);
  ASSERT_EQ(connect->BeginConnect(), kIoPending);
  EXPECT_EQ(WaitForAny(std::vector<Waitable>{*connect}, 10), kWaitTimeout);
  EXPECT_EQ(connect->Cancel(), kSuccess);
  EXPECT_EQ(connect->Finish(transferred), kOperationAborted);
  ASSERT_EQ(connect->BeginConnect(), kIoPending);
  SharedHandle client;
  EXPECT_EQ(OpenPipe(name, client), kSuccess);
  EXPECT_EQ(connect.Outcome(kIoPending, transferred), kSuccess);
}

TEST(Pipes, SeveralInstancesServeTheirOwnClients) {
  const std::wstring name = PipeName("several");
  constexpr std::size_t kClients = 10;
  std::vector<SharedHandle> servers(kClients);
  std::vector<SharedHandle> clients(kClients);
  for (SharedHandle& server : servers) {
    server = MakeInstance(name);
  }
  for (std::size_t i = 0; i < kClients; ++i) {
    ASSERT_EQ(OpenPipe(name, clients[i]), kSuccess);
    ASSERT_EQ(Write(clients[i], std::to_string(i)), kSuccess);
  }
  std::set<std::string> seen;
  for (const SharedHandle& server : servers) {
    ASSERT_EQ(Connect(server), kSuccess);
    const Message message = Read(server);
    seen.insert(message.text);
    ASSERT_EQ(Write(server, "for " + message.text), kSuccess);
  }
  EXPECT_EQ(seen.size(), kClients);
  for (std::size_t i = 0; i < kClients; ++i) {
    EXPECT_EQ(Read(clients[i]).text, "for " + std::to_string(i));
  }
}

TEST(Pipes, DisconnectedInstanceServesTheNextClient) {
  Pair pair("reuse");
  for (int round = 0; round < 20; ++round) {
    // Something unread and something half read: none of it may reach the next client or server.
    ASSERT_EQ(Write(pair.client, std::string(100, 'u')), kSuccess);
    char part[10];
    Operation read(pair.server);
    std::uint32_t transferred = 0;
    EXPECT_EQ(read.Outcome(read->BeginRead(part, sizeof part), transferred), kMoreData);
    ASSERT_EQ(Write(pair.client, std::string(round % 2 == 0 ? 100 : 0, 'u')), kSuccess);
    EXPECT_EQ(DisconnectPipe(pair.server), kSuccess);
    EXPECT_EQ(DisconnectPipe(pair.server), kPipeNotConnected);

    Operation connect(pair.server);
    ASSERT_EQ(connect->BeginConnect(), kIoPending);
    SharedHandle next;
    ASSERT_EQ(OpenPipe(pair.name, next), kSuccess);
    ASSERT_EQ(SetMessageReadMode(next), kSuccess);
    ASSERT_EQ(connect.Outcome(kIoPending, transferred), kSuccess);
    EXPECT_EQ(Write(pair.client, "x"), kPipeNotConnected);
    pair.client = next;
    ASSERT_EQ(Write(pair.client, "in"), kSuccess);
    EXPECT_EQ(Read(pair.server).text, "in");
    ASSERT_EQ(Write(pair.server, "out"), kSuccess);
    EXPECT_EQ(Read(pair.client).text, "out");
  }
}

TEST(Pipes, NamesAreFoundWithoutRegardToCase) {
  const std::wstring name = PipeName("Case");
  std::wstring upper = name;
  std::transform(upper.begin() + 9, upper.end(), upper.begin() + 9,
                 [](wchar_t unit) { return unit >= L'a' && unit <= L'z' ? static_cast<wchar_t>(unit - 32) : unit; });
  const SharedHandle server = MakeInstance(name);
  SharedHandle client;
  EXPECT_EQ(OpenPipe(upper, client), kSuccess);
}

TEST(Pipes, UnusualNamesAreKeptApart) {
  const std::wstring base = PipeName("names ");
  const std::wstring names[] = {base + L"a b",
                                base + L"a%20b",
                                base + L"\u00E4\u20AC",
                                base + L"..",
                                base + L"a.pipe",
                                base + L"a.lock",
                                base + L"a",
                                base + std::wstring(150, L'x') + L"1",
                                base + std::wstring(150, L'x') + L"2"};
  std::vector<SharedHandle> servers;
  for (const std::wstring& name : names) {
    SharedHandle client;
    EXPECT_EQ(OpenPipe(name, client), kFileNotFound);
    servers.push_back(MakeInstance(PipeSettings{.name = name, .maximum_instances = 1}));
    EXPECT_EQ(OpenPipe(name, client), kSuccess);
  }
}

TEST(Pipes, WrongNamesAreRefused) {
  SharedHandle pipe;
  for (const std::wstring& name :
       {L""s, L"name"s, L"\\\\.\\pipe\\"s, L"\\\\.\\pipe"s, L"//./pipe/name"s, L"/tmp/name"s, L"\\\\.\\pipe\\a\0b"s}) {
    EXPECT_EQ(CreatePipeInstance({.name = name}, pipe), kInvalidName);
    EXPECT_EQ(OpenPipe(name, pipe), kInvalidName);
    EXPECT_EQ(WaitForFreePipe(name, 1), kInvalidName);
    EXPECT_FALSE(pipe.IsValid());
  }
}

TEST(Pipes, WithoutAServerNothingIsFound) {
  const std::wstring name = PipeName("absent");
  SharedHandle client;
  EXPECT_EQ(OpenPipe(name, client), kFileNotFound);
  EXPECT_EQ(WaitForFreePipe(name, 10), kFileNotFound);
  {
    const SharedHandle server = MakeInstance(name);
    EXPECT_EQ(WaitForFreePipe(name, kLimitMs), kSuccess);
  }
  EXPECT_EQ(OpenPipe(name, client), kFileNotFound) << "the name goes with its last instance";
  EXPECT_FALSE(client.IsValid());
}

TEST(Pipes, InstancesAreLimitedAndFurtherClientsFindThePipeBusy) {
  const std::wstring name = PipeName("busy");
  SharedHandle server = MakeInstance(PipeSettings{.name = name, .maximum_instances = 1});
  SharedHandle second;
  EXPECT_EQ(CreatePipeInstance({.name = name, .maximum_instances = 1}, second), kPipeBusy);
  EXPECT_FALSE(second.IsValid());
  std::deque<SharedHandle> clients;
  ErrorCode opened = kSuccess;
  while (opened == kSuccess && clients.size() < 100) {
    opened = OpenPipe(name, clients.emplace_back());
  }
  EXPECT_EQ(opened, kPipeBusy);
  EXPECT_FALSE(clients.back().IsValid());
  const ErrorCode waited = WaitForFreePipe(name, 10);
  EXPECT_TRUE(waited == kTimeout || waited == kSuccess) << waited;
  server.Reset();
  EXPECT_EQ(CreatePipeInstance({.name = name, .maximum_instances = 1}, second), kSuccess) << "the place is free again";
}

TEST(Pipes, BurstOfClientsGetsIn) {
  const std::wstring name = PipeName("burst");
  constexpr std::size_t kClients = 60;
  std::vector<SharedHandle> servers;
  for (std::uint32_t i = 0; i < ListeningInstances(); ++i) {
    servers.push_back(MakeInstance(name));
  }
  std::vector<std::thread> threads;
  std::atomic<std::size_t> opened{0};
  for (std::size_t i = 0; i < kClients; ++i) {
    threads.emplace_back([&] {
      SharedHandle client;
      opened += OpenPipe(name, client) == kSuccess ? 1 : 0;
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(opened, kClients);
}

TEST(Pipes, BothSidesTellTheProcessBehind) {
  const Pair pair("peer");
  PipePeer peer;
  EXPECT_EQ(GetPipePeer(pair.server, true, peer), kSuccess);
  EXPECT_EQ(peer.process_id, CurrentProcessId());
  peer = {};
  EXPECT_EQ(GetPipePeer(pair.client, false, peer), kSuccess);
  EXPECT_EQ(peer.process_id, CurrentProcessId());
  EXPECT_EQ(GetPipePeer(SharedHandle(), false, peer), kInvalidHandle);
}

TEST(Pipes, HandleFromElsewhereWorksAsAClientsEnd) {
  const std::wstring name = PipeName("adopted");
  const SharedHandle server = MakeInstance(name);
  const SharedHandle client(OpenRawClient(name));
  ASSERT_EQ(Connect(server), kSuccess);
  EXPECT_EQ(SetMessageReadMode(client), kSuccess);
  ASSERT_EQ(Write(client, "in"), kSuccess);
  EXPECT_EQ(Read(server).text, "in");
  ASSERT_EQ(Write(server, "a long answer"), kSuccess);
  EXPECT_EQ(Read(client, 4).text, "a long answer");
}

TEST(Pipes, WrongHandlesAreRefused) {
  const SharedHandle event = CreateManualEvent();
  for (const SharedHandle& wrong : {SharedHandle(), event}) {
    Operation operation(wrong);
    char byte = 0;
    EXPECT_NE(operation->BeginConnect(), kIoPending);
    EXPECT_EQ(operation->BeginRead(&byte, 1), kInvalidHandle);
    EXPECT_EQ(operation->BeginWrite(&byte, 1), kInvalidHandle);
    EXPECT_EQ(operation->Cancel(), kNotFound);
    EXPECT_EQ(SetMessageReadMode(wrong), kInvalidHandle);
    EXPECT_EQ(DisconnectPipe(wrong), kInvalidHandle);
  }
}

TEST(Pipes, LeaveNoHandlesBehind) {
  const auto cycle = [] {
    Pair pair("leak");
    const std::string message(200000, 'x');
    Operation write(pair.client);
    const ErrorCode begun = write->BeginWrite(message.data(), static_cast<std::uint32_t>(message.size()));
    EXPECT_EQ(Read(pair.server, 300000).text, message);
    std::uint32_t transferred = 0;
    EXPECT_EQ(write.Outcome(begun, transferred), kSuccess);
    EXPECT_EQ(Write(pair.server, std::string(2000, 'x')), kSuccess);
    char byte = 0;
    Operation read(pair.server);
    EXPECT_EQ(read->BeginRead(&byte, 1), kIoPending);
  };
  cycle();
  const std::size_t before = CountProcessResources().handles;
  for (int i = 0; i < 100; ++i) {
    cycle();
  }
  EXPECT_EQ(CountProcessResources().handles, before);
}

}  // namespace
}  // namespace Zelto::Platform::Testing
