#include "zelto/threading/task.h"

#include "zelto/threading/serial_task_queue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Zelto::Utilities {
namespace {

using std::this_thread::get_id;
using testing::ElementsAre;

constexpr std::chrono::seconds kLimit{20};

bool IsReady(const std::future<void>& future) {
  return future.wait_for(kLimit) == std::future_status::ready;
}

TEST(Task, WhoWaitsAtOnceRunsTheQueueItself) {
  const auto queue = SerialTaskQueue::Create();
  int same_thread = 0;
  // The pool may come first when this thread is held up: the point is that it usually need not.
  for (int i = 0; i < 200; ++i) {
    std::vector<int> order;
    auto first = queue->Run([&order] { order.push_back(1); });
    auto second = queue->Run([&order] { order.push_back(2); });
    auto third = queue->Run([&order] {
      order.push_back(3);
      return get_id();
    });
    same_thread += third.get() == get_id();
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
    EXPECT_TRUE(first.is_done() && second.is_done());
  }
  EXPECT_GT(same_thread, 100);
}

TEST(Task, RunsInOrderWhoeverRunsIt) {
  const auto queue = SerialTaskQueue::Create();
  std::vector<int> order;
  std::vector<int> expected;
  std::vector<Task<void>> kept;
  for (int i = 0; i < 2000; ++i) {
    expected.push_back(i);
    auto task = queue->Run([&order, i] { order.push_back(i); });
    if (i % 3 == 0) {
      kept.push_back(task);
    } else if (i % 7 == 0) {
      task.get();
    }
  }
  queue->Run([] {}).get();
  EXPECT_EQ(order, expected);
}

TEST(Task, BeginsWithoutAnybodyWaiting) {
  for (const bool asked : {false, true}) {
    for (const bool kept : {false, true}) {
      // Until the pool's dispatcher sleeps, to be woken by the task; that it does is not relied upon.
      std::this_thread::sleep_for(std::chrono::milliseconds(150));
      std::promise<void> ran;
      auto task = SerialTaskQueue::Create()->Run([&ran] { ran.set_value(); });
      if (asked) {
        (void)task.is_done();
      }
      if (!kept) {
        task = {};
      }
      EXPECT_TRUE(IsReady(ran.get_future())) << asked << kept;
    }
  }
}

TEST(Task, ResultAndFailureCanBeTakenByEveryCopy) {
  const auto queue = SerialTaskQueue::Create();
  const auto text = queue->Run([] { return std::wstring(L"answer"); });
  auto copy = text;
  EXPECT_EQ(text.get(), L"answer");
  EXPECT_EQ(std::move(copy).get(), L"answer");  // shared: copied, not moved out
  EXPECT_EQ(text.get(), L"answer");
  const auto failing = queue->Run([]() -> int { throw std::range_error("bad conversion"); });
  failing.wait();
  EXPECT_TRUE(failing.is_done());
  EXPECT_THROW(failing.get(), std::range_error);
  EXPECT_THROW(Task<int>(failing).get(), std::range_error);
  EXPECT_THROW(Task<int>().get(), std::future_error);
}

TEST(Task, ADoneTaskHoldsNothingOfItsBody) {
  auto resource = std::make_shared<int>(1);
  const auto task = SerialTaskQueue::Create()->Run([resource] { return *resource; });
  task.wait();
  EXPECT_EQ(resource.use_count(), 1);
}

TEST(Task, ContinuationsGetTheResultTheTaskOrTheFailure) {
  const auto queue = SerialTaskQueue::Create();
  const auto number = queue->Run([] { return 20; });
  EXPECT_EQ(number.then([](int value) { return value + 1; }).then([](int value) { return value * 2; }).get(), 42);
  EXPECT_EQ(number.then([](const Task<int>& done) { return done.is_done(); }).get(), true);  // added when it is done

  std::atomic<bool> ran = false;
  const auto failing = queue->Run([] { throw std::runtime_error("Pipe already closed"); });
  EXPECT_THROW(failing.then([&ran] { ran = true; }).then([&ran] { ran = true; }).get(), std::runtime_error);
  EXPECT_FALSE(ran);
  EXPECT_TRUE(failing
                  .then([](const Task<void>& done) {
                    try {
                      done.get();
                    } catch (const std::runtime_error&) {
                      return true;
                    }
                    return false;
                  })
                  .get());

  std::promise<void> done;
  queue->Run([] {}).then([&done] { done.set_value(); });  // nobody holds either task
  EXPECT_TRUE(IsReady(done.get_future()));
}

TEST(Task, ABlockedTaskStarvesNoOtherQueue) {
  constexpr int kBlocked = 40;
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  std::atomic<int> begun = 0;
  std::promise<void> all_begun;
  std::vector<Task<void>> blocked;
  for (int i = 0; i < kBlocked; ++i) {
    blocked.push_back(SerialTaskQueue::Create()->Run([&, released] {
      if (++begun == kBlocked) {
        all_begun.set_value();
      }
      released.wait();
    }));
    (void)blocked.back().is_done();
  }
  EXPECT_TRUE(IsReady(all_begun.get_future()));
  EXPECT_EQ(SerialTaskQueue::Create()->Run([] { return 1; }).then([](int value) { return value; }).get(), 1);
  release.set_value();
  for (const auto& task : blocked) {
    task.get();
  }
}

TEST(Task, ManyThreadsMayWaitForTheTasksOfOneQueue) {
  const auto queue = SerialTaskQueue::Create();
  int sum = 0;  // guarded by the queue alone
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int k = 0; k < 500; ++k) {
        auto task = queue->Run([&sum] { ++sum; });
        if (k % 2 == 0) {
          task.get();
        } else {
          task.then([] {});
        }
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(queue->Run([&sum] { return sum; }).get(), 2000);
}

}  // namespace
}  // namespace Zelto::Utilities
