#include "zelto/threading/timer_thread.h"

#include "tests/support/counter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

namespace Zelto::Utilities {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Testing::Counter;
using Testing::Gate;

constexpr unsigned int kNever = 0xFFFFFFFF;

std::string TextOf(const std::exception_ptr& thrown) {
  try {
    std::rethrow_exception(thrown);
  } catch (const std::exception& error) {
    return error.what();
  }
}

TEST(TimerThread, RunsAfterEachIntervalCountedFromTheEndOfARun) {
  Counter runs;
  steady_clock::time_point ended;
  milliseconds shortest = milliseconds::max();
  const auto begin = steady_clock::now();
  ended = begin;
  TimerThread timer(
      [&] {
        shortest = std::min(shortest, std::chrono::duration_cast<milliseconds>(steady_clock::now() - ended));
        std::this_thread::sleep_for(milliseconds(30));
        ended = steady_clock::now();
        runs.Add();
      },
      50);
  timer.Start();
  timer.Start();  // on a running thread that is not paused it does nothing
  ASSERT_TRUE(runs.WaitFor(3));
  EXPECT_GE(steady_clock::now() - begin, milliseconds(3 * 78));
  EXPECT_GE(shortest, milliseconds(48));
}

TEST(TimerThread, AnEventRunsTheActionAtOnce) {
  Counter runs;
  TimerThread timer([&] { runs.Add(); }, kNever);
  timer.Stop();  // without a thread it leaves the event set
  timer.Start();
  ASSERT_TRUE(runs.WaitFor(1));
  for (int i = 2; i <= 5; ++i) {
    timer.SetEvent();
    ASSERT_TRUE(runs.WaitFor(i));
  }
  EXPECT_EQ(runs.Value(), 5);
}

TEST(TimerThread, StopRunsTheActionOneLastTimeUnlessItIsPaused) {
  Counter runs;
  TimerThread timer([&] { runs.Add(); }, kNever);
  // Only a thread that waits when `Stop` comes has a last run, so give it the chance to get there.
  int last_runs = 0;
  for (int attempt = 0; attempt < 100 && last_runs == 0; ++attempt) {
    const int before = runs.Value();
    timer.Start();
    EXPECT_FALSE(runs.WaitFor(before + 1, milliseconds(20)));
    timer.Stop();
    last_runs = runs.Value() - before;
  }
  EXPECT_EQ(last_runs, 1);
  const int before = runs.Value();
  timer.Pause();
  timer.Start();
  timer.Stop();
  EXPECT_EQ(runs.Value(), before);
}

TEST(TimerThread, APauseHoldsUntilAStartOfTheRunningThread) {
  Counter runs;
  TimerThread timer([&] { runs.Add(); }, 5);
  timer.Pause();
  timer.Start();  // makes the thread but leaves the pause
  timer.SetEvent();
  EXPECT_FALSE(runs.WaitFor(1, milliseconds(100)));
  timer.Stop();
  timer.SetInterval(kNever);
  timer.Start();
  EXPECT_FALSE(runs.WaitFor(1, milliseconds(100))) << "the pause outlives a stop";
  timer.Start();
  EXPECT_TRUE(runs.WaitFor(1)) << "it runs at once, long before the interval is over";
  timer.Pause();
  timer.Start();
  EXPECT_TRUE(runs.WaitFor(2));
}

TEST(TimerThread, CollectsWhatTheActionThrowsInOrder) {
  Counter runs;
  TimerThread timer(
      [&] {
        runs.Add();
        throw std::runtime_error(std::to_string(runs.Value()));
      },
      1);
  EXPECT_FALSE(timer.HasExceptions());
  timer.Start();
  ASSERT_TRUE(runs.WaitFor(20));
  std::list<std::exception_ptr> all = timer.ResetExceptions();
  ASSERT_TRUE(runs.WaitFor(30));
  timer.Stop();
  EXPECT_TRUE(timer.HasExceptions());
  all.splice(all.end(), timer.ResetExceptions());
  EXPECT_FALSE(timer.HasExceptions());
  EXPECT_EQ(static_cast<int>(all.size()), runs.Value()) << "one for each run";
  int number = 0;
  for (const std::exception_ptr& thrown : all) {
    EXPECT_EQ(TextOf(thrown), std::to_string(++number));
  }
}

TEST(TimerThread, AnActionMayChangeItsOwnTimer) {
  Counter first;
  Counter second;
  TimerThread timer(nullptr, kNever);
  const auto alive = std::make_shared<int>(7);
  timer.SetAction([&, alive] {
    timer.SetInterval(1);
    timer.SetAction([&] { second.Add(); });
    EXPECT_EQ(*alive, 7) << "the replaced action lives until it returns";
    first.Add();
  });
  timer.Start();
  timer.SetEvent();
  EXPECT_TRUE(first.WaitFor(1));
  EXPECT_TRUE(second.WaitFor(3));
  EXPECT_EQ(first.Value(), 1);
  EXPECT_EQ(timer.GetInterval(), 1u);
  timer.Stop();
  EXPECT_EQ(alive.use_count(), 1);
}

TEST(TimerThread, SettersWaitForARunInProgress) {
  Gate gate;
  TimerThread timer([&] { gate.Pass(); }, kNever);
  timer.Start();
  timer.SetEvent();
  ASSERT_TRUE(gate.entered.WaitFor(1));
  int left_before_set = -1;
  std::thread setter([&] {
    timer.SetAction(nullptr);
    left_before_set = gate.left.Value();
  });
  gate.Open();
  setter.join();
  EXPECT_EQ(left_before_set, 1);
}

TEST(TimerThread, StopInTheActionIsADeadlockErrorAndEndsTheThread) {
  Counter runs;
  std::unique_ptr<TimerThread> timer;
  timer = std::make_unique<TimerThread>(
      [&] {
        runs.Add();
        timer->Stop();
      },
      kNever);
  for (int round = 1; round <= 2; ++round) {
    timer->Start();
    timer->SetEvent();
    ASSERT_TRUE(runs.WaitFor(round));
    timer->Stop();
    EXPECT_EQ(runs.Value(), round);
    const auto thrown = timer->ResetExceptions();
    ASSERT_EQ(thrown.size(), 1u);
    EXPECT_THROW(std::rethrow_exception(thrown.front()), std::system_error);
  }
}

TEST(TimerThread, ARunningOneCanBeDestroyed) {
  for (int i = 0; i < 100; ++i) {
    Counter runs;
    TimerThread timer([&] { runs.Add(); }, static_cast<unsigned int>(i % 2));
    timer.Start();
    if (i % 3 == 0) {
      ASSERT_TRUE(runs.WaitFor(2));
    }
  }
}

}  // namespace
}  // namespace Zelto::Utilities
