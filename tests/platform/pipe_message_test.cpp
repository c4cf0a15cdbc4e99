#include "tests/platform/pipe_support.h"

namespace Zelto::Platform::Testing {
namespace {

TEST(PipeMessages, ArriveWholeInChunks) {
  const Pair pair("chunks");
  const std::pair<std::size_t, std::uint32_t> cases[] = {
      {0, 4096},         {1, 4096},       {4095, 4096},    {4096, 4096},           {4097, 4096},
      {8192, 4096},      {5000, 1},       {60000, 7},      {65536, 4096},          {65537, 4096},
      {65536, 65536},    {131072, 65536}, {3 << 20, 4096}, {(3 << 20) + 1, 65536}, {8 << 20, 16 << 20},
      {200000, 1 << 20}, {100, 4096},
  };
  for (const auto& [size, chunk] : cases) {
    const std::string sent = Bytes(size);
    for (const bool to_server : {true, false}) {
      SCOPED_TRACE(testing::Message() << size << " bytes by " << chunk << (to_server ? " in" : " out"));
      std::thread writer([&] { EXPECT_EQ(Write(to_server ? pair.client : pair.server, sent), kSuccess); });
      const Message message = Read(to_server ? pair.server : pair.client, chunk);
      writer.join();
      EXPECT_EQ(message.code, kSuccess);
      EXPECT_TRUE(message.text == sent);
      EXPECT_EQ(message.chunks, size == 0 ? 1 : (size + chunk - 1) / chunk);
    }
  }
}

TEST(PipeMessages, PendingWritesStayInOrder) {
  for (const std::size_t size : {std::size_t{5000}, std::size_t{200000}}) {
    const Pair pair("order");
    const std::string filler = Bytes(size);
    std::deque<Operation> writes = FillUp(pair.server, filler);
    const std::string later[] = {"first", "", std::string(100000, 's'), "last"};
    for (const std::string& message : later) {
      const ErrorCode begun = writes.emplace_back(pair.server).BeginWrite(message);
      EXPECT_TRUE(begun == kIoPending || (message.empty() && begun == kSuccess)) << begun;
    }
    // Each write is waited for on a thread of its own, the last begun first.
    std::vector<std::thread> waiters;
    for (auto write = writes.rbegin(); write != writes.rend(); ++write) {
      if ((*write)->IsPending()) {
        waiters.emplace_back([&operation = *write] { EXPECT_EQ(operation.Outcome(), kSuccess); });
      }
    }
    for (std::size_t i = 0; i < writes.size(); ++i) {
      const std::size_t from_end = writes.size() - i;
      const Message message = Read(pair.client, 1000);
      ASSERT_EQ(message.code, kSuccess);
      EXPECT_TRUE(message.text == (from_end <= 4 ? later[4 - from_end] : filler)) << i;
    }
    for (std::thread& waiter : waiters) {
      waiter.join();
    }
  }
}

TEST(PipeMessages, CancelledWriteIsNotSentAndHoldsUpNoOther) {
  const Pair pair("cancel-write");
  const std::string filler = Bytes(200000);
  std::deque<Operation> writes = FillUp(pair.client, filler);
  Operation middle(pair.client);
  Operation last(pair.client);
  EXPECT_EQ(middle.BeginWrite("middle"), kIoPending);
  EXPECT_EQ(last.BeginWrite("last"), kIoPending);
  for (Operation* cancelled : {&middle, &writes.back()}) {
    EXPECT_EQ((*cancelled)->Cancel(), kSuccess);
    EXPECT_FALSE((*cancelled)->IsPending());
    EXPECT_EQ(cancelled->Finish(), kOperationAborted);
    EXPECT_EQ((*cancelled)->Cancel(), kNotFound);
  }
  std::thread waiter([&last] {
    EXPECT_EQ(last.Outcome(), kSuccess);
    EXPECT_EQ(last.Transferred(), 4u);
  });
  for (std::size_t i = 0; i + 1 < writes.size(); ++i) {
    EXPECT_TRUE(Read(pair.server).text == filler);
  }
  EXPECT_EQ(Read(pair.server).text, "last");
  waiter.join();
}

TEST(PipeMessages, DestroyedOperationIsCancelled) {
  const Pair pair("destroy");
  {
    const std::string message = Bytes(1 << 20);
    const std::deque<Operation> writes = FillUp(pair.client, message);
    std::string buffer(10, '?');
    Operation read(pair.client);
    EXPECT_EQ(read->BeginRead(buffer.data(), 10), kIoPending);
  }
  EXPECT_EQ(Write(pair.server, "still there"), kSuccess);
  EXPECT_EQ(Read(pair.client).text, "still there");
}

TEST(PipeMessages, CancelLosesNoMessageThatHasCome) {
  const Pair pair("cancel-late");
  for (int round = 0; round < 50; ++round) {
    char buffer[16] = {};
    Operation read(pair.server);
    ASSERT_EQ(read->BeginRead(buffer, sizeof buffer), kIoPending);
    ASSERT_EQ(Write(pair.client, "data"), kSuccess);
    read->Cancel();
    if (const ErrorCode result = read.Finish(); result == kSuccess) {
      EXPECT_EQ(std::string(buffer, read.Transferred()), "data");
    } else {
      EXPECT_EQ(result, kOperationAborted);
      EXPECT_EQ(Read(pair.server).text, "data");
    }
  }
}

TEST(PipeMessages, PendingReadEndsByDataCancelOrTimeOut) {
  const Pair pair("pending-read");
  char buffer[16] = {};
  Operation read(pair.server);
  EXPECT_EQ(read->Cancel(), kNotFound);
  ASSERT_EQ(read->BeginRead(buffer, sizeof buffer), kIoPending);
  EXPECT_EQ(read.Finish(), kIoIncomplete);
  EXPECT_EQ(WaitForAny(std::vector<Waitable>{*read}, 20), kWaitTimeout);
  EXPECT_TRUE(read->IsPending());
  EXPECT_EQ(read->Cancel(), kSuccess);
  EXPECT_EQ(read.Finish(), kOperationAborted);

  ASSERT_EQ(read->BeginRead(buffer, sizeof buffer), kIoPending);
  std::thread writer([&pair] { EXPECT_EQ(Write(pair.client, "data"), kSuccess); });
  EXPECT_EQ(read.Outcome(), kSuccess);
  EXPECT_EQ(std::string(buffer, read.Transferred()), "data");
  writer.join();
  // A cancel that comes after the message either has it or leaves it to the next read.
  for (int round = 0; round < 50; ++round) {
    ASSERT_EQ(read->BeginRead(buffer, sizeof buffer), kIoPending);
    ASSERT_EQ(Write(pair.client, std::to_string(round)), kSuccess);
    read->Cancel();
    const ErrorCode result = read.Finish();
    EXPECT_TRUE(result == kSuccess || result == kOperationAborted) << result;
    EXPECT_EQ(result == kSuccess ? std::string(buffer, read.Transferred()) : Read(pair.server).text,
              std::to_string(round));
  }
}

TEST(PipeMessages, WaitEndsByTheLowestOfEventsAndOperations) {
  const Pair pair("wait");
  const SharedHandle stop = CreateManualEvent();
  const SharedHandle other = CreateManualEvent();
  char buffer[16] = {};
  Operation read(pair.client);
  ASSERT_EQ(read->BeginRead(buffer, sizeof buffer), kIoPending);
  const std::vector<Waitable> things{other, *read, stop};
  EXPECT_EQ(WaitForAny(things, 0), kWaitTimeout);
  std::thread stopper([&stop] { SignalEvent(stop); });
  EXPECT_EQ(WaitForAny(things, kLimitMs), 2u);
  stopper.join();
  EXPECT_TRUE(read->IsPending());
  ASSERT_EQ(Write(pair.server, "x"), kSuccess);
  EXPECT_EQ(WaitForAny(things, kLimitMs), 1u);
  EXPECT_EQ(WaitForAny(things, kLimitMs), 1u) << "it can be finished still";
  SignalEvent(other);
  EXPECT_EQ(WaitForAny(things, kLimitMs), 0u);
  EXPECT_EQ(read.Finish(), kSuccess);
  ClearEvent(other);
  EXPECT_EQ(WaitForAny(things, 0), 1u) << "an operation that is not pending counts as finished";

  const SharedHandle none;
  EXPECT_EQ(WaitForAny(std::vector<Waitable>{stop, none}, 0) == kWaitFailed ? GetLastErrorCode() : 0, kInvalidHandle);
  EXPECT_EQ(WaitForAny({}, 0) == kWaitFailed ? GetLastErrorCode() : 0, kInvalidParameter);
}

// A read and writes at once, both ways, from several threads, with messages of all forms.
TEST(PipeMessages, TrafficOnBothWaysAtOnce) {
  const Pair pair("traffic");
  const auto message = [](std::size_t i) {
    const std::size_t sizes[] = {0, 10, 4096, 70000, 65536, 1, 300000};
    return std::string(sizes[i % std::size(sizes)], static_cast<char>(i));
  };
  std::vector<std::thread> threads;
  for (const SharedHandle& pipe : {pair.server, pair.client}) {
    threads.emplace_back([&message, pipe] {
      for (std::size_t i = 0; i < 200; ++i) {
        ASSERT_EQ(Write(pipe, message(i)), kSuccess);
      }
    });
    threads.emplace_back([&message, pipe] {
      for (std::size_t i = 0; i < 200; ++i) {
        ASSERT_TRUE(Read(pipe, 8192).text == message(i)) << i;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace Zelto::Platform::Testing
