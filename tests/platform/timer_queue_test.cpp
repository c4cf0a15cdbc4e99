// What the library needs of the system's timer queue, on both targets.
#include "zelto/platform/timer_queue.h"

#include "tests/support/counter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>

namespace Zelto::Platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

using Testing::Counter;
using Testing::Gate;

void Count(void* counter, unsigned char /*fired*/) {
  static_cast<Counter*>(counter)->Add();
}

void PassGate(void* gate, unsigned char /*fired*/) {
  static_cast<Gate*>(gate)->Pass();
}

void OpenGate(void* gate, unsigned char /*fired*/) {
  static_cast<Gate*>(gate)->Open();
}

class TimerQueueTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(TimerQueue::Create(queue_), kSuccess); }

  void* Start(TimerQueue::Callback callback, void* parameter, std::uint32_t due_ms, std::uint32_t period_ms) {
    void* timer = nullptr;
    EXPECT_EQ(queue_->CreateTimer(timer, callback, parameter, due_ms, period_ms), kSuccess);
    EXPECT_NE(timer, nullptr);
    return timer;
  }

  std::shared_ptr<TimerQueue> queue_;
};

TEST_F(TimerQueueTest, APeriodicTimerKeepsItsBeatUntilItIsDeleted) {
  Counter count;
  const auto started = steady_clock::now();
  void* const timer = Start(Count, &count, 0, 20);
  ASSERT_TRUE(count.WaitFor(26));
  EXPECT_GE(steady_clock::now() - started, milliseconds(24 * 20));
  EXPECT_EQ(queue_->DeleteTimer(timer), kSuccess);
  const int at_end = count.Value();
  void* const other = Start(Count, &count, 60, 0);
  ASSERT_TRUE(count.WaitFor(at_end + 1));
  EXPECT_EQ(count.Value(), at_end + 1) << "only the other timer fired";
  EXPECT_EQ(queue_->DeleteTimer(other), kSuccess);
}

TEST_F(TimerQueueTest, TimersFireByDueTimeAndATimerDueNeverDoesNot) {
  struct Entry {
    Counter* order;
    std::uint32_t due_ms;
  };
  Counter order;
  std::array<Entry, 4> entries{Entry{&order, kInfinite}, Entry{&order, 600}, Entry{&order, 0}, Entry{&order, 300}};
  const auto note = [](void* entry, unsigned char) {
    static_cast<Entry*>(entry)->order->Add(static_cast<Entry*>(entry)->due_ms);
  };
  for (Entry& entry : entries) {
    Start(note, &entry, entry.due_ms, 0);
  }
  ASSERT_TRUE(order.WaitFor(3));
  queue_.reset();
  EXPECT_THAT(order.Ids(), testing::ElementsAre(0, 300, 600));
}

TEST_F(TimerQueueTest, DeletingWaitsForTheCallbackInProgress) {
  Gate gate;
  void* const timer = Start(PassGate, &gate, 0, 0);
  ASSERT_TRUE(gate.entered.WaitFor(1));
  void* const opener = Start(OpenGate, &gate, 50, 0);
  EXPECT_EQ(queue_->DeleteTimer(timer), kSuccess);
  EXPECT_EQ(gate.left.Value(), 1);
  EXPECT_EQ(queue_->DeleteTimer(opener), kSuccess);
}

TEST_F(TimerQueueTest, SlowCallbacksHoldUpNoOtherTimer) {
  Gate gate;
  for (int i = 0; i < 8; ++i) {
    Start(PassGate, &gate, 0, 100);
  }
  ASSERT_TRUE(gate.entered.WaitFor(8));
  Counter quick;
  Start(Count, &quick, 0, 5);
  EXPECT_TRUE(quick.WaitFor(50)) << "while all slow callbacks are inside";
  EXPECT_EQ(gate.left.Value(), 0);
  gate.Open();
  EXPECT_TRUE(gate.left.WaitFor(16)) << "late callbacks run, too";
  queue_.reset();
}

TEST_F(TimerQueueTest, ACallbackMayStartAndDeleteOtherTimers) {
  struct Chain {
    TimerQueue* queue;
    Counter inner{};
    Counter outer{};
    ErrorCode deleted = 1;
  } chain{queue_.get()};
  const auto run = [](void* parameter, unsigned char) {
    auto& links = *static_cast<Chain*>(parameter);
    void* inner = nullptr;
    links.queue->CreateTimer(inner, Count, &links.inner, 0, 1);
    links.inner.WaitFor(3);
    links.deleted = links.queue->DeleteTimer(inner);
    links.outer.Add();
  };
  void* const timer = Start(run, &chain, 0, 0);
  ASSERT_TRUE(chain.outer.WaitFor(1));
  EXPECT_EQ(chain.deleted, kSuccess);
  EXPECT_GE(chain.inner.Value(), 3);
  EXPECT_EQ(queue_->DeleteTimer(timer), kSuccess);
}

TEST_F(TimerQueueTest, TheQueueGoesWithItsTimersAfterTheirCallbacks) {
  std::shared_ptr<TimerQueue> helper;
  ASSERT_EQ(TimerQueue::Create(helper), kSuccess);
  Gate gate;
  Counter ticks;
  Start(PassGate, &gate, 0, 0);
  Start(Count, &ticks, 0, 1);
  ASSERT_TRUE(gate.entered.WaitFor(1));
  ASSERT_TRUE(ticks.WaitFor(5));
  void* opener = nullptr;
  ASSERT_EQ(helper->CreateTimer(opener, OpenGate, &gate, 50, 0), kSuccess);
  queue_.reset();
  EXPECT_EQ(gate.left.Value(), 1);
  const int at_end = ticks.Value();
  Counter later;
  ASSERT_EQ(helper->CreateTimer(opener, Count, &later, 20, 0), kSuccess);
  ASSERT_TRUE(later.WaitFor(1));
  EXPECT_EQ(ticks.Value(), at_end);
}

}  // namespace
}  // namespace Zelto::Platform
