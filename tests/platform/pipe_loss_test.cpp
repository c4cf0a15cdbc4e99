// The table of docs/pipes.md: which code each way of losing the peer gives.
#include "tests/platform/pipe_support.h"

#include <deque>
#include <functional>
#include <thread>

namespace Zelto::Platform::Testing {
namespace {

// Each way is tried on an idle end, during a read and during a write that is pending.
void ExpectLoss(bool on_server, const std::function<void(Pair&)>& lose, const LossCodes& codes) {
  const auto observer = [on_server](Pair& pair) { return on_server ? pair.server : pair.client; };
  // The operations own the end that is observed: it is let go of by the pair when the other end goes.
  {
    Pair pair("loss-idle");
    const SharedHandle end = observer(pair);
    lose(pair);
    for (int times = 0; times < 2; ++times) {
      EXPECT_EQ(Read(end).code, codes.read);
      EXPECT_EQ(Write(end, "x"), codes.write);
      EXPECT_EQ(Write(end, std::string(1 << 20, 'x')), codes.write);
    }
  }
  {
    Pair pair("loss-write-first");
    const SharedHandle end = observer(pair);
    lose(pair);
    EXPECT_EQ(Write(end, "x"), codes.write);
    EXPECT_EQ(Read(end).code, codes.read);
  }
  {
    Pair pair("loss-reading");
    char byte = 0;
    std::uint32_t transferred = 0;
    Operation read(observer(pair));
    ASSERT_EQ(read->BeginRead(&byte, 1), kIoPending);
    lose(pair);
    EXPECT_EQ(read.Outcome(kIoPending, transferred), codes.pending_read);
  }
  for (const std::size_t size : {std::size_t{5000}, std::size_t{1} << 20}) {
    Pair pair("loss-writing");
    const std::string message = Bytes(size);
    std::deque<Operation> writes;
    std::uint32_t transferred = 0;
    ErrorCode begun = kSuccess;
    while (begun == kSuccess && writes.size() < 10000) {
      begun =
          writes.emplace_back(observer(pair))->BeginWrite(message.data(), static_cast<std::uint32_t>(message.size()));
    }
    ASSERT_EQ(begun, kIoPending);
    Operation behind(observer(pair));
    ASSERT_EQ(behind->BeginWrite(message.data(), 10), kIoPending);
    lose(pair);
    EXPECT_EQ(writes.back().Outcome(kIoPending, transferred), codes.pending_write);
    // A small write behind it may have been taken already; in no case does it hang.
    const ErrorCode second = behind.Outcome(kIoPending, transferred);
    EXPECT_TRUE(second == codes.pending_write || second == kSuccess) << second;
  }
}

void CloseClient(Pair& pair) {
  pair.client.Reset();
}
void Disconnect(Pair& pair) {
  EXPECT_EQ(DisconnectPipe(pair.server), kSuccess);
}
void DisconnectAndClose(Pair& pair) {
  EXPECT_EQ(DisconnectPipe(pair.server), kSuccess);
  pair.server.Reset();
}
void CloseServer(Pair& pair) {
  pair.server.Reset();
}

TEST(PipeLoss, ClientCloses) {
  ExpectLoss(true, CloseClient, {109, 232, 109, 109});
}

TEST(PipeLoss, ServerDisconnectsItself) {
  ExpectLoss(true, Disconnect, {233, 233, 233, 233});
}

TEST(PipeLoss, ServerDisconnects) {
  ExpectLoss(false, Disconnect, {233, 233, 233, 233});
  ExpectLoss(false, DisconnectAndClose, {233, 233, 233, 233});
}

TEST(PipeLoss, ServerClosesWithoutDisconnecting) {
  ExpectLoss(false, CloseServer, ServerClosed());
}

// The reader waits for the read alone, or for a stop event beside it.
TEST(PipeLoss, DisconnectEndsTheWaitOfAnotherThread) {
  for (const bool alone : {true, false}) {
    const Pair pair("wait-disconnect");
    const SharedHandle begun = CreateManualEvent();
    const SharedHandle stop = CreateManualEvent();
    std::thread reader([&] {
      char byte = 0;
      std::uint32_t transferred = 0;
      Operation read(pair.server);
      EXPECT_EQ(read->BeginRead(&byte, 1), kIoPending);
      SignalEvent(begun);
      std::vector<Waitable> things{*read};
      if (!alone) {
        things.emplace_back(stop);
      }
      EXPECT_EQ(WaitForAny(things, kLimitMs), 0u);
      EXPECT_EQ(read->Finish(transferred), kPipeNotConnected);
    });
    EXPECT_EQ(WaitForEvent(begun, kLimitMs), 0u);
    EXPECT_EQ(DisconnectPipe(pair.server), kSuccess);
    reader.join();
  }
}

TEST(PipeLoss, WhatAClosedPeerWroteIsReadFirst) {
  for (const std::size_t size : {std::size_t{10}, std::size_t{0}, std::size_t{2000}}) {
    const std::string text = Bytes(size);
    for (const bool on_server : {true, false}) {
      for (const bool unread : {false, true}) {
        Pair pair("left", 65536);
        SharedHandle& closing = on_server ? pair.client : pair.server;
        const SharedHandle end = on_server ? pair.server : pair.client;
        ASSERT_EQ(Write(closing, text), kSuccess);
        ASSERT_EQ(Write(closing, "last"), kSuccess);
        if (unread) {
          ASSERT_EQ(Write(end, "never read"), kSuccess);
        }
        closing.Reset();
        if (unread) {
          EXPECT_NE(Write(end, "into the void"), kSuccess);
        }
        const Message first = Read(end, 1000);
        EXPECT_TRUE(first.code == kSuccess && first.text == text) << first.code;
        EXPECT_EQ(Read(end).text, "last");
        EXPECT_EQ(Read(end).code, on_server ? 109 : ServerClosed().read);
      }
    }
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

TEST(PipeLoss, ClientThatVanishedBeforeItWasTakenCountsAsConnected) {
  for (const bool wrote : {true, false}) {
    const std::wstring name = PipeName("vanished");
    const SharedHandle server = MakeInstance(name);
    SharedHandle client;
    ASSERT_EQ(OpenPipe(name, client), kSuccess);
    if (wrote) {
      ASSERT_EQ(Write(client, "farewell"), kSuccess);
    }
    client.Reset();
    Operation connect(server);
    EXPECT_EQ(connect->BeginConnect(), kPipeConnected);
    if (wrote) {
      EXPECT_EQ(Read(server).text, "farewell");
    }
    EXPECT_EQ(Read(server).code, 109u);
    EXPECT_EQ(Write(server, "x"), 232u);
    EXPECT_EQ(DisconnectPipe(server), kSuccess);
    EXPECT_EQ(connect->BeginConnect(), kIoPending);
  }
}

TEST(PipeLoss, InstanceWithoutAClientCannotBeUsed) {
  const SharedHandle server = MakeInstance(PipeName("listening"));
  EXPECT_EQ(Read(server).code, kPipeListening);
  EXPECT_EQ(Write(server, "x"), kPipeListening);
  EXPECT_EQ(DisconnectPipe(server), kPipeListening);
}

}  // namespace
}  // namespace Zelto::Platform::Testing
