#include "tests/platform/pipe_support.h"
#include "tests/support/process_resources.h"

#include <algorithm>
#include <thread>

namespace Zelto::Platform::Testing {
namespace {

using namespace std::string_literals;
using Zelto::Testing::CountProcessResources;

TEST(Pipes, ServerMayConnectBeforeOrAfterTheClient) {
  const std::wstring name = PipeName("first");
  const SharedHandle before = MakeInstance({.name = name});
  SharedHandle client;
  {
    Operation connect(before);
    EXPECT_EQ(connect->Cancel(), kNotFound);
    ASSERT_EQ(connect->BeginConnect(), kIoPending);
    EXPECT_EQ(connect.Finish(), kIoIncomplete);
    EXPECT_EQ(WaitForAny(std::vector<Waitable>{*connect}, 10), kWaitTimeout);
    EXPECT_EQ(connect->Cancel(), kSuccess);
    EXPECT_EQ(connect.Finish(), kOperationAborted);
    ASSERT_EQ(connect->BeginConnect(), kIoPending);
    std::thread opener([&] { EXPECT_EQ(OpenPipe(name, client), kSuccess); });
    EXPECT_EQ(connect.Outcome(), kSuccess);
    opener.join();
  }
  const SharedHandle after = MakeInstance({.name = name});
  SharedHandle early;
  EXPECT_EQ(OpenPipe(name, early), kSuccess);
  EXPECT_EQ(Write(early, "early"), kSuccess) << "a client need not wait to be taken";
  EXPECT_EQ(Operation(after)->BeginConnect(), kPipeConnected);
  EXPECT_EQ(Read(after).text, "early");
  for (const auto& [server, its_client] : {std::pair(before, client), std::pair(after, early)}) {
    EXPECT_EQ(Write(server, "hello"), kSuccess);
    EXPECT_EQ(Read(its_client).text, "hello");
  }
}

TEST(Pipes, DisconnectedInstanceServesTheNextClient) {
  Pair pair("reuse");
  for (int round = 0; round < 20; ++round) {
    // Something unread and something half read: none of it may reach the next client or server.
    ASSERT_EQ(Write(pair.client, std::string(100, 'u')), kSuccess);
    char part[10];
    Operation read(pair.server);
    EXPECT_EQ(read.Outcome(read->BeginRead(part, sizeof part)), kMoreData);
    ASSERT_EQ(Write(pair.client, std::string(round % 2 == 0 ? 100 : 0, 'u')), kSuccess);
    EXPECT_EQ(DisconnectPipe(pair.server), kSuccess);
    EXPECT_EQ(DisconnectPipe(pair.server), kPipeNotConnected);

    Operation connect(pair.server);
    ASSERT_EQ(connect->BeginConnect(), kIoPending);
    SharedHandle next;
    ASSERT_EQ(OpenPipe(pair.name, next), kSuccess);
    ASSERT_EQ(SetMessageReadMode(next), kSuccess);
    ASSERT_EQ(connect.Outcome(), kSuccess);
    EXPECT_EQ(Write(pair.client, "x"), kPipeNotConnected);
    pair.client = next;
    ASSERT_EQ(Write(pair.client, "in"), kSuccess);
    EXPECT_EQ(Read(pair.server).text, "in");
    ASSERT_EQ(Write(pair.server, "out"), kSuccess);
    EXPECT_EQ(Read(pair.client).text, "out");
  }
}

TEST(Pipes, NamesAreKeptApartWithoutRegardToCase) {
  std::vector<SharedHandle> servers;
  for (const std::wstring& name : {L"a b"s, L"a%20b"s, L"\u00E4\u20AC"s, L".."s, L"a.pipe"s, L"a.lock"s, L"a"s,
                                   std::wstring(150, L'x') + L"1", std::wstring(150, L'x') + L"2"}) {
    const std::wstring full = PipeName("names ") + name;
    std::wstring upper = full;
    std::transform(upper.begin() + 9, upper.end(), upper.begin() + 9,
                   [](wchar_t unit) { return unit >= L'a' && unit <= L'z' ? static_cast<wchar_t>(unit - 32) : unit; });
    SharedHandle client;
    EXPECT_EQ(OpenPipe(full, client), kFileNotFound);
    servers.push_back(MakeInstance({.name = full, .maximum_instances = 1}));
    EXPECT_EQ(OpenPipe(upper, client), kSuccess);
  }
}

TEST(Pipes, HandleFromElsewhereWorksAsAClientsEnd) {
  const std::wstring name = PipeName("adopted");
  const SharedHandle server = MakeInstance({.name = name});
  const SharedHandle client(OpenRawClient(name));
  ASSERT_EQ(Connect(server), kSuccess);
  EXPECT_EQ(SetMessageReadMode(client), kSuccess);
  ASSERT_EQ(Write(client, "in"), kSuccess);
  EXPECT_EQ(Read(server).text, "in");
  ASSERT_EQ(Write(server, "a long answer"), kSuccess);
  EXPECT_EQ(Read(client, 4).text, "a long answer");
}

TEST(Pipes, WrongNamesAndHandlesAreRefused) {
  SharedHandle pipe;
  for (const std::wstring& name :
       {L""s, L"name"s, L"\\\\.\\pipe\\"s, L"\\\\.\\pipe"s, L"//./pipe/name"s, L"/tmp/name"s, L"\\\\.\\pipe\\a\0b"s}) {
    EXPECT_EQ(CreatePipeInstance({.name = name}, pipe), kInvalidName);
    EXPECT_EQ(OpenPipe(name, pipe), kInvalidName);
    EXPECT_EQ(WaitForFreePipe(name, 1), kInvalidName);
    EXPECT_FALSE(pipe.IsValid());
  }
  for (const SharedHandle& wrong : {SharedHandle(), CreateManualEvent()}) {
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

TEST(Pipes, NameLastsAsLongAsItsInstancesAndLimitsThem) {
  const std::wstring name = PipeName("instances");
  SharedHandle client;
  EXPECT_EQ(OpenPipe(name, client), kFileNotFound);
  EXPECT_EQ(WaitForFreePipe(name, 10), kFileNotFound);
  SharedHandle server = MakeInstance({.name = name, .maximum_instances = 1});
  EXPECT_EQ(WaitForFreePipe(name, kLimitMs), kSuccess);
  SharedHandle second;
  EXPECT_EQ(CreatePipeInstance({.name = name, .maximum_instances = 1}, second), kPipeBusy);
  EXPECT_FALSE(second.IsValid());
  server.Reset();
  EXPECT_EQ(OpenPipe(name, client), kFileNotFound);
  EXPECT_FALSE(client.IsValid());
  EXPECT_EQ(CreatePipeInstance({.name = name, .maximum_instances = 1}, second), kSuccess) << "the place is free again";
}

// A pending operation that is destroyed lets go of its buffer, event and descriptors at once; the pipe goes on.
TEST(Pipes, LeaveNothingBehind) {
  const auto cycle = [] {
    const Pair pair("leak");
    const std::string message(200000, 'x');
    EXPECT_EQ(Write(pair.client, ""), kSuccess);
    Operation write(pair.client);
    const ErrorCode begun = write.BeginWrite(message);
    EXPECT_EQ(Read(pair.server).text, "");
    EXPECT_EQ(Read(pair.server, 300000).text, message);
    EXPECT_EQ(write.Outcome(begun), kSuccess);
    {
      FillUp(pair.client, message);
      char byte = 0;
      EXPECT_EQ(Operation(pair.client)->BeginRead(&byte, 1), kIoPending);
    }
    EXPECT_EQ(Write(pair.server, "still there"), kSuccess);
    EXPECT_EQ(Read(pair.client).text, "still there");
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
