#include "zelto/platform/events.h"

#include <gtest/gtest.h>

#include <chrono>
#include <initializer_list>
#include <thread>
#include <vector>

namespace Zelto::Platform::Testing {
namespace {

using Utilities::SharedHandle;

constexpr std::uint32_t kLimitMs = 20000;
constexpr std::uint32_t kShortMs = 30;

std::vector<SharedHandle> MakeEvents(std::size_t count, std::initializer_list<std::size_t> signalled = {}) {
  std::vector<SharedHandle> events(count);
  for (SharedHandle& event : events) {
    event = CreateManualEvent();
    EXPECT_TRUE(event.IsValid());
  }
  for (const std::size_t index : signalled) {
    EXPECT_EQ(SignalEvent(events[index]), kSuccess);
  }
  return events;
}

TEST(Events, StaySignalledUntilReset) {
  const SharedHandle event = CreateManualEvent();
  EXPECT_EQ(WaitForEvent(event, 0), kWaitTimeout);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(SignalEvent(event), kSuccess);
    EXPECT_EQ(SignalEvent(event), kSuccess) << "a signalled event can be signalled again";
    EXPECT_EQ(WaitForEvent(event, 0), 0u);
    EXPECT_EQ(WaitForEvent(event, kInfinite), 0u) << "a wait does not use the signal up";
    EXPECT_EQ(ClearEvent(event), kSuccess);
    EXPECT_EQ(ClearEvent(event), kSuccess);
    EXPECT_EQ(WaitForEvent(event, 0), kWaitTimeout);
  }
}

TEST(Events, WaitForSeveralEndsByTheLowestOrByAll) {
  struct Case {
    std::size_t count;
    std::initializer_list<std::size_t> signalled;
    bool all;
    std::uint32_t result;
  };
  const Case cases[] = {
      {1, {0}, false, 0},
      {1, {0}, true, 0},
      {3, {2}, false, 2},
      {3, {2, 1}, false, 1},
      {3, {2, 1}, true, kWaitTimeout},
      {3, {0, 1, 2}, true, 0},
      {3, {}, false, kWaitTimeout},
      {kMaximumWaitObjects, {63}, false, 63},
  };
  for (const Case& test : cases) {
    const auto events = MakeEvents(test.count, test.signalled);
    EXPECT_EQ(WaitForEvents(events, test.all, 0), test.result);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(WaitForEvents(events, test.all, kShortMs), test.result);
    const auto lasted = std::chrono::steady_clock::now() - begin;
    EXPECT_TRUE(test.result != kWaitTimeout || lasted >= std::chrono::milliseconds(kShortMs - 1));
  }
}

TEST(Events, WaitLastsItsTimeOut) {
  const auto events = MakeEvents(2, {0});
  for (const bool several : {false, true}) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(several ? WaitForEvents(events, true, kShortMs) : WaitForEvent(events[1], kShortMs), kWaitTimeout);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(kShortMs - 1));
  }
}

// What the signalling thread wrote is there for the waiting one.
TEST(Events, SignalFromAnotherThreadEndsAWait) {
  for (const bool all : {false, true}) {
    const auto events = MakeEvents(3, {1});
    if (!all) {
      ClearEvent(events[1]);
    }
    int written = 0;
    std::thread thread([&] {
      written = 7;
      SignalEvent(events[2]);
      SignalEvent(events[0]);
    });
    const std::uint32_t result = WaitForEvents(events, all, kLimitMs);
    EXPECT_TRUE(all ? result == 0 : result == 0 || result == 2) << result;
    EXPECT_EQ(written, 7);
    thread.join();
  }
}

TEST(Events, WrongUseFailsWithACode) {
  const SharedHandle none;
  EXPECT_EQ(SignalEvent(none), kInvalidHandle);
  EXPECT_EQ(ClearEvent(none), kInvalidHandle);
  const auto failure = [](std::uint32_t result) { return result == kWaitFailed ? GetLastErrorCode() : kSuccess; };
  EXPECT_EQ(failure(WaitForEvent(none, 0)), kInvalidHandle);
  auto events = MakeEvents(2);
  events.push_back(none);
  EXPECT_EQ(failure(WaitForEvents(events, false, 0)), kInvalidHandle);
  EXPECT_EQ(failure(WaitForEvents({}, false, 0)), kInvalidParameter);
  EXPECT_EQ(failure(WaitForEvents(MakeEvents(kMaximumWaitObjects + 1), false, 0)), kInvalidParameter);
}

TEST(SharedHandles, CloseWithTheirLastOwner) {
  SharedHandle event = CreateManualEvent();
  SharedHandle copy = event;
  EXPECT_EQ(event.UseCount(), 2);
  EXPECT_TRUE(copy == event);
  event.Reset();
  EXPECT_EQ(event.Get(), nullptr);
  EXPECT_EQ(SignalEvent(copy), kSuccess) << "one owner is left";
  EXPECT_EQ(copy.UseCount(), 1);
  EXPECT_FALSE(SharedHandle(nullptr).IsValid());
  EXPECT_FALSE(SharedHandle(reinterpret_cast<void*>(~std::uintptr_t{0})).IsValid());
}

}  // namespace
}  // namespace Zelto::Platform::Testing
