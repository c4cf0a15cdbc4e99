#include "zelto/threading/task_pool.h"

#include "zelto/threading/failure_report.h"
#include "zelto/threading/thread_starter.h"

#include <chrono>
#include <utility>

namespace Zelto::Utilities {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTick{1};
constexpr unsigned kQuietTicksBeforeSleep = 64;
constexpr std::chrono::seconds kIdleLimit{2};
constexpr std::chrono::milliseconds kThreadRetryDelay{20};

}  // namespace

TaskPool& TaskPool::Instance() {
  static TaskPool& pool = *new TaskPool;
  return pool;
}

void TaskPool::EnsureStarted() {
  if (started_.load(std::memory_order_acquire)) {
    return;
  }
  std::lock_guard guard(mutex_);
  if (!dispatcher_.joinable()) {
    dispatcher_ = StartThread([this] { Dispatch(); });
    started_.store(true, std::memory_order_release);
  }
}

void TaskPool::Submit(std::shared_ptr<PoolJob> job) noexcept {
  bool idle_worker = false;
  {
    std::lock_guard guard(mutex_);
    ready_.Push(std::move(job));
    idle_worker = !NeedsWorker();
  }
  (idle_worker ? work_ : dispatch_).notify_one();
}

void TaskPool::Watch(std::shared_ptr<PoolWatcher> watcher) noexcept {
  bool wake = false;
  {
    std::lock_guard guard(mutex_);
    watched_.Push(std::move(watcher));
    wake = std::exchange(asleep_, false);
  }
  if (wake) {
    dispatch_.notify_one();
  }
}

void TaskPool::Dispatch() {
  const auto called = [this] { return NeedsWorker() || !ended_.empty(); };
  unsigned quiet_ticks = 0;
  auto next_tick = Clock::now() + kTick;
  Lock lock(mutex_);
  while (true) {
    JoinEnded(lock);
    if (NeedsWorker()) {
      AddWorker(lock);
      continue;
    }
    if (quiet_ticks >= kQuietTicksBeforeSleep && watched_.IsEmpty()) {
      asleep_ = true;
      dispatch_.wait(lock, [&] { return called() || !watched_.IsEmpty(); });
      asleep_ = false;
      quiet_ticks = watched_.IsEmpty() ? quiet_ticks : 0;
      next_tick = Clock::now() + kTick;
      continue;
    }
    if (!dispatch_.wait_until(lock, next_tick, called)) {
      quiet_ticks = watched_.IsEmpty() ? quiet_ticks + 1 : 0;
      Tick(lock);
      next_tick = Clock::now() + kTick;
    }
  }
}

void TaskPool::AddWorker(Lock& lock) {
  auto self = workers_.end();
  bool started = false;
  ++starting_;
  try {
    self = workers_.emplace(workers_.begin());  // under the lock: a worker that ends takes itself out of the list
    lock.unlock();
    *self = StartThread([this, self] { Work(self); });
    started = true;
  } catch (...) {
    if (lock.owns_lock()) {
      lock.unlock();
    }
    ReportCurrentException(L"Failed to start a thread of the task pool");
    std::this_thread::sleep_for(kThreadRetryDelay);
  }
  lock.lock();
  if (!started) {
    --starting_;
    if (self != workers_.end()) {
      workers_.erase(self);
    }
  }
}

void TaskPool::JoinEnded(Lock& lock) {
  if (ended_.empty()) {
    return;
  }
  std::list<std::thread> ended;
  ended.swap(ended_);
  lock.unlock();
  for (std::thread& thread : ended) {
    thread.join();
  }
  lock.lock();
}

void TaskPool::Tick(Lock& lock) {
  JobList<PoolWatcher> watched = std::exchange(watched_, {});
  lock.unlock();
  while (const std::shared_ptr<PoolWatcher> watcher = watched.Pop()) {
    watcher->OnTick();
  }
  lock.lock();
}

void TaskPool::Work(std::list<std::thread>::iterator self) {
  Lock lock(mutex_);
  --starting_;
  while (true) {
    if (std::shared_ptr<PoolJob> job = ready_.Pop()) {
      lock.unlock();
      job->RunOnPool();
      job.reset();
      lock.lock();
      continue;
    }
    ++idle_;
    const bool called = work_.wait_for(lock, kIdleLimit, [this] { return !ready_.IsEmpty(); });
    --idle_;
    if (!called) {
      break;
    }
  }
  ended_.splice(ended_.end(), workers_, self);
  lock.unlock();
  dispatch_.notify_one();
}

}  // namespace Zelto::Utilities
