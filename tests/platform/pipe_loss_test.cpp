// The table of docs/pipes.md: which code each way of losing the peer gives.
#include "tests/platform/pipe_support.h"

#include <functional>
#include <span>

namespace Zelto::Platform::Testing {
namespace {

// Each way is tried on an idle end, while a thread waits for a read alone or with an event, and with a write pending.
void ExpectLoss(const char* way, bool on_server, const std::function<void(Pair&)>& lose, const LossCodes& codes) {
  SCOPED_TRACE(way);
  // The operations own the end that is observed: it is let go of by the pair when the other end goes.
  const auto observer = [on_server](Pair& pair) { return on_server ? pair.server : pair.client; };
  for (const bool write_first : {false, true}) {
    Pair pair("loss-idle");
    const SharedHandle end = observer(pair);
    lose(pair);
    EXPECT_EQ(write_first ? Write(end, "x") : codes.write, codes.write);
    for (int times = 0; times < 2; ++times) {
      EXPECT_EQ(Read(end).code, codes.read);
      EXPECT_EQ(Write(end, "x"), codes.write);
      EXPECT_EQ(Write(end, std::string(1 << 20, 'x')), codes.write);
    }
  }
  const SharedHandle never = CreateManualEvent();
  for (const bool alone : {true, false}) {
    Pair pair("loss-reading");
    char byte = 0;
    Operation read(observer(pair));
    ASSERT_EQ(read->BeginRead(&byte, 1), kIoPending);
    std::thread loser([&] { lose(pair); });
    const std::vector<Waitable> things{*read, never};
    EXPECT_EQ(WaitForAny(std::span(things).first(alone ? 1 : 2), kLimitMs), 0u);
    EXPECT_EQ(read.Finish(), codes.pending_read);
    loser.join();
  }
  for (const std::size_t size : {std::size_t{5000}, std::size_t{1} << 20}) {
    Pair pair("loss-writing");
    const std::string message = Bytes(size);
    std::deque<Operation> writes = FillUp(observer(pair), message);
    Operation behind(observer(pair));
    ASSERT_EQ(behind->BeginWrite(message.data(), 10), kIoPending);
    lose(pair);
    EXPECT_EQ(writes.back().Outcome(), codes.pending_write);
    // A small write behind it may have been taken already; in no case does it hang.
    const ErrorCode second = behind.Outcome();
    EXPECT_TRUE(second == codes.pending_write || second == kSuccess) << second;
  }
}

TEST(PipeLoss, GivesEachWayItsCodes) {
  const auto close_client = [](Pair& pair) { pair.client.Reset(); };
  const auto close_server = [](Pair& pair) { pair.server.Reset(); };
  const auto disconnect = [](Pair& pair) { EXPECT_EQ(DisconnectPipe(pair.server), kSuccess); };
  const auto disconnect_and_close = [&](Pair& pair) {
    disconnect(pair);
    close_server(pair);
  };
  ExpectLoss("client closes", true, close_client, {109, 232, 109, 109});
  ExpectLoss("server disconnects itself", true, disconnect, {233, 233, 233, 233});
  ExpectLoss("server disconnects", false, disconnect, {233, 233, 233, 233});
  ExpectLoss("server disconnects and closes", false, disconnect_and_close, {233, 233, 233, 233});
  ExpectLoss("server closes", false, close_server, ServerClosed());
}

// Also when the peer has left something unread, which resets the connection on Linux.
TEST(PipeLoss, WhatAClosedPeerWroteIsReadFirst) {
  for (int ways = 0; ways < 8; ++ways) {
    const bool on_server = (ways & 1) != 0;
    const bool unread = (ways & 2) != 0;
    const std::string text = (ways & 4) != 0 ? "" : Bytes(2000);
    SCOPED_TRACE(testing::Message() << on_server << unread << text.size());
    Pair pair("left", 65536);
    SharedHandle& closing = on_server ? pair.client : pair.server;
    const SharedHandle end = on_server ? pair.server : pair.client;
    ASSERT_EQ(Write(closing, text), kSuccess);
    ASSERT_EQ(Write(closing, "last"), kSuccess);
    ASSERT_EQ(unread ? Write(end, "never read") : kSuccess, kSuccess);
    closing.Reset();
    EXPECT_TRUE(!unread || text.empty() || Write(end, "into the void") != kSuccess);
    const Message first = Read(end, 1000);
    EXPECT_TRUE(first.code == kSuccess && first.text == text) << first.code;
    EXPECT_EQ(Read(end).text, "last");
    EXPECT_EQ(Read(end).code, on_server ? 109 : ServerClosed().read);
  }
}

TEST(PipeLoss, DisconnectDropsWhatTheServerHasNotRead) {
  const Pair pair("unread");
  ASSERT_EQ(Write(pair.client, "to server"), kSuccess);
  ASSERT_EQ(Write(pair.server, "to client"), kSuccess);
  EXPECT_EQ(DisconnectPipe(pair.server), kSuccess);
  EXPECT_EQ(Read(pair.server).code, 233u);
  EXPECT_EQ(Read(pair.client).code, DisconnectDropsAnswers() ? 233u : 0u);
  EXPECT_EQ(Read(pair.client).code, 233u);
}

TEST(PipeLoss, InstanceNeedsAClientAndOneThatVanishedCounts) {
  for (const bool wrote : {true, false}) {
    const std::wstring name = PipeName("vanished");
    const SharedHandle server = MakeInstance({.name = name});
    EXPECT_EQ(Read(server).code, kPipeListening);
    EXPECT_EQ(Write(server, "x"), kPipeListening);
    EXPECT_EQ(DisconnectPipe(server), kPipeListening);
    SharedHandle client;
    ASSERT_EQ(OpenPipe(name, client), kSuccess);
    ASSERT_EQ(wrote ? Write(client, "farewell") : kSuccess, kSuccess);
    client.Reset();
    Operation connect(server);
    EXPECT_EQ(connect->BeginConnect(), kPipeConnected);
    EXPECT_EQ(wrote ? Read(server).text : "farewell", "farewell");
    EXPECT_EQ(Read(server).code, 109u);
    EXPECT_EQ(Write(server, "x"), 232u);
    EXPECT_EQ(DisconnectPipe(server), kSuccess);
    EXPECT_EQ(connect->BeginConnect(), kIoPending);
  }
}

}  // namespace
}  // namespace Zelto::Platform::Testing
