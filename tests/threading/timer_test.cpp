#include "zelto/threading/timer.h"

#include "tests/support/counter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Zelto::Utilities {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Testing::Counter;
using Testing::Gate;

std::string RefusalOf(Timer& timer, std::function<void()> action) {
  try {
    timer.Start(1, false, std::move(action));
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "started";
}

/// Waits while another timer ticks: what would fire meanwhile has done so.
void LetTimersTick(int ticks = 10) {
  Counter passed;
  Timer timer(10, false, [&] { passed.Add(); });
  EXPECT_TRUE(passed.WaitFor(ticks));
}

TEST(Timer, ASingleShotRunsOnceAndStaysRunningUntilStop) {
  Counter runs;
  const auto begin = steady_clock::now();
  Timer timer(50, true, [&] { runs.Add(); });
  ASSERT_TRUE(runs.WaitFor(1));
  EXPECT_GE(steady_clock::now() - begin, milliseconds(35));  // the system's clock may tick coarsely
  LetTimersTick();
  EXPECT_EQ(runs.Value(), 1);
  EXPECT_TRUE(timer.IsRunning());
  EXPECT_EQ(RefusalOf(timer, [] {}), "Timer already started.");
  timer.Stop();
  EXPECT_FALSE(timer.IsRunning());
  timer.Start(0, true, [&] { runs.Add(); });
  EXPECT_TRUE(runs.WaitFor(2));
}

TEST(Timer, ADisabledOneKeepsFiringWithoutItsAction) {
  Counter runs;
  Timer timer;
  timer.Stop();  // it never started
  EXPECT_FALSE(timer.IsRunning());
  EXPECT_TRUE(timer.IsEnabled());
  timer.SetEnabled(false);
  timer.Start(1, false, [&] { runs.Add(); });
  LetTimersTick();
  EXPECT_EQ(runs.Value(), 0);
  timer.SetEnabled(true);
  EXPECT_TRUE(runs.WaitFor(3));
  EXPECT_TRUE(timer.IsRunning());
}

TEST(Timer, ARefusedStartLeavesTheRunningTimerWhole) {
  Gate gate;
  Counter runs;
  Counter others;
  Timer timer(1, false, [&] {
    gate.Pass();
    runs.Add();
  });
  ASSERT_TRUE(gate.entered.WaitFor(1));
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(RefusalOf(timer, [&] { others.Add(); }), "Timer already started.") << "and it waits for no run";
  }
  EXPECT_EQ(gate.left.Value(), 0);
  gate.Open();
  EXPECT_TRUE(runs.WaitFor(5));
  timer.Stop();
  EXPECT_FALSE(timer.IsRunning());
  const int at_stop = runs.Value();
  LetTimersTick();
  EXPECT_EQ(runs.Value(), at_stop);
  EXPECT_EQ(others.Value(), 0);
  EXPECT_EQ(RefusalOf(timer, [&] { others.Add(); }), "started");
  EXPECT_TRUE(others.WaitFor(2));
}

TEST(Timer, StopWaitsForTheRunInProgressAndIsTheEnd) {
  Gate gate;
  Timer timer(1, false, [&] { gate.Pass(); });
  ASSERT_TRUE(gate.entered.WaitFor(1));
  LetTimersTick();  // callbacks come while the run goes on
  std::vector<std::thread> stoppers;
  std::atomic<int> left_at_return{0};
  for (int i = 0; i < 3; ++i) {
    stoppers.emplace_back([&] {
      timer.Stop();
      left_at_return += gate.left.Value();
    });
  }
  gate.Open();
  for (std::thread& stopper : stoppers) {
    stopper.join();
  }
  EXPECT_GE(left_at_return, 3) << "each Stop returned after the run";
  const int left = gate.left.Value();
  LetTimersTick();
  EXPECT_EQ(gate.left.Value(), left);
}

TEST(Timer, RunsOneAtATimeAndLateOnesFollow) {
  Gate gate;
  std::atomic<int> inside{0};
  std::atomic<int> most{0};
  Timer slow(5, false, [&] {
    most = std::max<int>(most, ++inside);
    gate.Pass();
    --inside;
  });
  ASSERT_TRUE(gate.entered.WaitFor(1));
  const auto begin = steady_clock::now();
  LetTimersTick(60);
  const auto late = (steady_clock::now() - begin) / milliseconds(5) / 2;
  EXPECT_EQ(gate.entered.Value(), 1);
  gate.Open();
  const auto opened = steady_clock::now();
  EXPECT_TRUE(gate.left.WaitFor(static_cast<int>(late)));
  EXPECT_LT(steady_clock::now() - opened, milliseconds(5) * late) << "not at the timer's beat";
  slow.Stop();
  EXPECT_EQ(most, 1);
}

TEST(Timer, TenThousandStartsAndStopsDoNotHang) {
  Timer timer;
  std::atomic<int> runs{0};
  const auto begin = steady_clock::now();
  int cycles = 0;
  for (; cycles < 10000 && steady_clock::now() - begin < std::chrono::minutes(3); ++cycles) {
    timer.Start(1, false, [&] { ++runs; });
    // Now and then the callback has just fired, or is about to.
    const int before = runs;
    for (int spins = 0; cycles % 3 == 0 && spins < cycles % 500 * 8 && runs == before; ++spins) {
      std::this_thread::yield();
    }
    timer.Stop();
    const int at_stop = runs;
    ASSERT_FALSE(timer.IsRunning());
    ASSERT_EQ(runs, at_stop);
  }
  EXPECT_EQ(cycles, 10000);
  EXPECT_GT(runs, 0);
}

TEST(Timer, AnActionMayStopRestartAndDestroyItsOwnTimer) {
  Counter runs;
  Timer timer;
  timer.Start(1, false, [&] {
    timer.Stop();
    EXPECT_FALSE(timer.IsRunning());
    timer.Start(1, false, [&] {
      timer.Stop();
      runs.Add();
    });
    runs.Add();
  });
  ASSERT_TRUE(runs.WaitFor(2));
  LetTimersTick();
  EXPECT_EQ(runs.Value(), 2);

  auto own = std::make_unique<Timer>();
  const auto alive = std::make_shared<int>(7);
  own->Start(1, false, [&runs, &own, alive] {
    Counter& after = runs;
    own.reset();
    EXPECT_EQ(*alive, 7) << "the action lives until it returns";
    after.Add();
  });
  EXPECT_TRUE(runs.WaitFor(3));
  LetTimersTick();
  EXPECT_EQ(runs.Value(), 3);
}

TEST(Timer, ItsEndWaitsForRunsThatStoppedTheirOwnTimer) {
  Gate gate;
  auto timer = std::make_unique<Timer>();
  timer->Start(1, true, [&] {
    timer->Stop();
    timer->Start(1, false, [&] {
      timer->Stop();
      gate.Pass();
    });
    gate.Pass();
  });
  ASSERT_TRUE(gate.entered.WaitFor(2));
  std::thread opener([&] {
    LetTimersTick();
    gate.Open();
  });
  timer.reset();
  EXPECT_EQ(gate.left.Value(), 2);
  opener.join();
}

TEST(Timer, RunningOnesCanBeDestroyedWhileOthersStart) {
  std::vector<std::thread> owners;
  for (int i = 0; i < 4; ++i) {
    owners.emplace_back([] {
      for (int round = 0; round < 200; ++round) {
        Counter runs;
        Timer timer(round % 2, false, [&] { runs.Add(); });
        if (round % 3 == 0) {
          EXPECT_TRUE(runs.WaitFor(1));
        }
      }
    });
  }
  for (std::thread& owner : owners) {
    owner.join();
  }
}

TEST(TimerDeathTest, AnExceptionOfTheActionEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(
      {
        Timer timer(0, true, [] { throw std::runtime_error("nobody catches this"); });
        LetTimersTick(1000);
      },
      "");
}

}  // namespace
}  // namespace Zelto::Utilities
