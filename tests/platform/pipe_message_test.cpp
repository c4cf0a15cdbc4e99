#include "tests/platform/pipe_support.h"

#include <deque>
#include <thread>

namespace Zelto::Platform::Testing {
namespace {

TEST(PipeMessages, ArriveWholeInChunks) {
  const Pair pair("chunks");
  struct Case {
    std::size_t size;
    std::uint32_t chunk;
  };
  const Case cases[] = {
      {0, 4096},         {1, 4096},       {4095, 4096},    {4096, 4096},           {4097, 4096},
      {8192, 4096},      {5000, 1},       {60000, 7},      {65536, 4096},          {65537, 4096},
      {65536, 65536},    {131072, 65536}, {3 << 20, 4096}, {(3 << 20) + 1, 65536}, {8 << 20, 16 << 20},
      {200000, 1 << 20}, {100, 4096},
  };
  for (const Case& test : cases) {
    const std::string sent = Bytes(test.size);
    for (const bool to_server : {true, false}) {
      SCOPED_TRACE(testing::Message() << test.size << " bytes by " << test.chunk << (to_server ? " in" : " out"));
      std::thread writer([&] { EXPECT_EQ(Write(to_server ? pair.client : pair.server, sent), kSuccess); });
      const Message message = Read(to_server ? pair.server : pair.client, test.chunk);
      writer.join();
      EXPECT_EQ(message.code, kSuccess);
      EXPECT_TRUE(message.text == sent);
      EXPECT_EQ(message.chunks.size(), test.size == 0 ? 1 : (test.size + test.chunk - 1) / test.chunk);
    }
  }
}

TEST(PipeMessages, KeepTheirBoundsWhileSeveralAreQueued) {
  const Pair pair("queued");
  std::deque<Operation> writes;
  const std::size_t sizes[] = {3, 0, 100000, 0, 5000, 70000, 1};
  std::vector<std::string> sent;
  for (const std::size_t size : sizes) {
    sent.push_back(Bytes(size));
  }
  for (const std::string& message : sent) {
    Operation& write = writes.emplace_back(pair.client);
    const ErrorCode begun = write->BeginWrite(message.data(), static_cast<std::uint32_t>(message.size()));
    ASSERT_TRUE(begun == kSuccess || begun == kIoPending) << begun;
  }
  // The writes that are pending go on inside the waits of their own thread.
  std::thread writer([&] {
    for (Operation& write : writes) {
      std::uint32_t transferred = 0;
      EXPECT_EQ(write.Outcome(kIoPending, transferred), kSuccess);
    }
  });
  for (const std::string& message : sent) {
    const Message received = Read(pair.server, 1000);
    EXPECT_EQ(received.code, kSuccess);
    EXPECT_TRUE(received.text == message) << received.text.size() << " bytes for " << message.size();
  }
  writer.join();
}

// Fills a pipe until a write is pending. @return the pending one last
void FillUp(const SharedHandle& pipe, const std::string& message, std::deque<Operation>& writes) {
  ErrorCode begun = kSuccess;
  while (begun == kSuccess && writes.size() < 10000) {
    begun = writes.emplace_back(pipe)->BeginWrite(message.data(), static_cast<std::uint32_t>(message.size()));
  }
  ASSERT_EQ(begun, kIoPending);
}

TEST(PipeMessages, PendingWritesStayInOrder) {
  for (const std::size_t size : {std::size_t{5000}, std::size_t{200000}}) {
    const Pair pair("order");
    const std::string filler = Bytes(size);
    std::deque<Operation> writes;
    FillUp(pair.server, filler, writes);
    const std::string later[] = {"first", "", std::string(100000, 's'), "last"};
    for (const std::string& message : later) {
      const ErrorCode begun =
          writes.emplace_back(pair.server)->BeginWrite(message.data(), static_cast<std::uint32_t>(message.size()));
      EXPECT_TRUE(begun == kIoPending || (message.empty() && begun == kSuccess)) << begun;
    }
    // Each write is waited for on a thread of its own, the last begun first.
    std::vector<std::thread> waiters;
    for (auto write = writes.rbegin(); write != writes.rend(); ++write) {
      if ((*write)->IsPending()) {
        waiters.emplace_back([&operation = *write] {
          std::uint32_t transferred = 0;
          EXPECT_EQ(operation.Outcome(kIoPending, transferred), kSuccess);
        });
      }
    }
    for (std::size_t i = 0; i < writes.size(); ++i) {
      const std::size_t from_end = writes.size() - i;
      const Message message = Read(pair.client);
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
  std::deque<Operation> writes;
  FillUp(pair.client, filler, writes);
  Operation& first = writes.back();
  Operation middle(pair.client);
  Operation last(pair.client);
  EXPECT_EQ(middle->BeginWrite("middle", 6), kIoPending);
  EXPECT_EQ(last->BeginWrite("last", 4), kIoPending);
  std::uint32_t transferred = 0;
  for (Operation* cancelled : {&middle, &first}) {
    EXPECT_EQ((*cancelled)->Cancel(), kSuccess);
    EXPECT_FALSE((*cancelled)->IsPending());
    EXPECT_EQ((*cancelled)->Finish(transferred), kOperationAborted);
    EXPECT_EQ((*cancelled)->Cancel(), kNotFound);
  }
  std::thread waiter([&last] {
    std::uint32_t sent = 0;
    EXPECT_EQ(last.Outcome(kIoPending, sent), kSuccess);
    EXPECT_EQ(sent, 4u);
  });
  for (std::size_t i = 0; i + 1 < writes.size(); ++i) {
    EXPECT_TRUE(Read(pair.server).text == filler);
  }
  EXPECT_EQ(Read(pair.server).text, "last");
  waiter.join();
}

// A pending operation that is destroyed lets go of its buffer and event at once; the pipe goes on.
TEST(PipeMessages, DestroyedOperationIsCancelled) {
  const Pair pair("destroy");
  {
    const std::string message = Bytes(1 << 20);
    std::deque<Operation> writes;
    FillUp(pair.client, message, writes);
    std::string buffer(10, '?');
    Operation read(pair.client);
    EXPECT_EQ(read->BeginRead(buffer.data(), 10), kIoPending);
  }
  EXPECT_EQ(Write(pair.server, "still there"), kSuccess);
  EXPECT_EQ(Read(pair.client).text, "still there");
}

TEST(PipeMessages, PendingReadEndsByDataCancelOrTimeOut) {
  const Pair pair("pending-read");
  char buffer[16] = {};
  std::uint32_t transferred = 0;
  Operation read(pair.server);
  EXPECT_EQ(read->Cancel(), kNotFound);
  ASSERT_EQ(read->BeginRead(buffer, sizeof buffer), kIoPending);
  EXPECT_EQ(read->Finish(transferred), kIoIncomplete);
  EXPECT_EQ(WaitForAny(std::vector<Waitable>{*read}, 20), kWaitTimeout);
  EXPECT_TRUE(read->IsPending());
  EXPECT_EQ(read->Cancel(), kSuccess);
  EXPECT_EQ(read->Finish(transferred), kOperationAborted);

  ASSERT_EQ(read->BeginRead(buffer, sizeof buffer), kIoPending);
  std::thread writer([&pair] { EXPECT_EQ(Write(pair.client, "data"), kSuccess); });
  EXPECT_EQ(read.Outcome(kIoPending, transferred), kSuccess);
  EXPECT_EQ(std::string(buffer, transferred), "data");
  writer.join();
}

// A cancel that comes after the message either has it or leaves it to the next read.
TEST(PipeMessages, CancelLosesNoMessageThatHasCome) {
  const Pair pair("cancel-late");
  for (int round = 0; round < 50; ++round) {
    char buffer[16] = {};
    std::uint32_t transferred = 0;
    Operation read(pair.server);
    ASSERT_EQ(read->BeginRead(buffer, sizeof buffer), kIoPending);
    ASSERT_EQ(Write(pair.client, "data"), kSuccess);
    read->Cancel();
    if (const ErrorCode result = read->Finish(transferred); result == kSuccess) {
      EXPECT_EQ(std::string(buffer, transferred), "data");
    } else {
      EXPECT_EQ(result, kOperationAborted);
      EXPECT_EQ(Read(pair.server).text, "data");
    }
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
  std::uint32_t transferred = 0;
  EXPECT_EQ(read->Finish(transferred), kSuccess);
  ClearEvent(other);
  EXPECT_EQ(WaitForAny(things, 0), 1u) << "an operation that is not pending counts as finished";

  const SharedHandle none;
  EXPECT_EQ(WaitForAny(std::vector<Waitable>{stop, none}, 0) == kWaitFailed ? GetLastErrorCode() : 0, kInvalidHandle);
  EXPECT_EQ(WaitForAny({}, 0) == kWaitFailed ? GetLastErrorCode() : 0, kInvalidParameter);
}

// A read and writes at once, both ways, from several threads, with messages of all forms.
TEST(PipeMessages, TrafficOnBothWaysAtOnce) {
  const Pair pair("traffic");
  constexpr int kMessages = 200;
  const std::size_t sizes[] = {0, 10, 4096, 70000, 65536, 1, 300000};
  const auto size_of = [&sizes](int i) { return sizes[static_cast<std::size_t>(i) % std::size(sizes)]; };
  const auto write = [&](const SharedHandle& pipe) {
    for (int i = 0; i < kMessages; ++i) {
      ASSERT_EQ(Write(pipe, std::string(size_of(i), static_cast<char>(i))), kSuccess);
    }
  };
  const auto read = [&](const SharedHandle& pipe) {
    for (int i = 0; i < kMessages; ++i) {
      const Message message = Read(pipe, 8192);
      ASSERT_EQ(message.code, kSuccess);
      ASSERT_TRUE(message.text == std::string(size_of(i), static_cast<char>(i))) << i;
    }
  };
  std::thread threads[] = {std::thread(write, pair.server), std::thread(read, pair.server),
                           std::thread(write, pair.client), std::thread(read, pair.client)};
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace Zelto::Platform::Testing
