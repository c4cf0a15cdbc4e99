#include "zelto/threading/thread_pool.h"

#include "zelto/threading/thread_starter.h"

#include <chrono>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Zelto::Utilities {

namespace {

constexpr std::chrono::milliseconds kPausedLookInterval{1};

}  // namespace

const unsigned int ThreadPool::MAXIMUM_WAIT_ATTEMPTS_BEFORE_CLOSE;
const unsigned int ThreadPool::WAIT_INTERVAL_BETWEEN_ATTEMPTS_TO_CLOSE;
const unsigned int ThreadPool::MAXIMUM_LOOP_WAIT_INTERVAL;

ThreadPool::ThreadPool(unsigned int threadCount) {
  try {
    ThreadPool::Resize(threadCount);
  } catch (...) {
    ThreadPool::Stop();
    throw;
  }
}

ThreadPool::~ThreadPool() {
  ThreadPool::WaitAndStop();
}

void ThreadPool::Start() {
  exit_threads_ = false;
  paused_ = false;
  accepting_tasks_ = true;
  task_event_.Set(tasks_.Size());
}

void ThreadPool::Pause() {
  paused_ = true;
}

void ThreadPool::Stop() {
  accepting_tasks_ = false;
  Task dropped;
  while (tasks_.TryPop(dropped)) {
    dropped = {};
  }
  exit_threads_ = true;
  task_event_.Set(threads_.size());
  JoinAndClearThreads();
}

void ThreadPool::WaitAndStop() {
  accepting_tasks_ = false;
  for (unsigned int attempt = 0; attempt < MAXIMUM_WAIT_ATTEMPTS_BEFORE_CLOSE && tasks_.Size() != 0; ++attempt) {
    task_event_.Set(tasks_.Size());
    std::this_thread::sleep_for(std::chrono::milliseconds(WAIT_INTERVAL_BETWEEN_ATTEMPTS_TO_CLOSE));
  }
  exit_threads_ = true;
  JoinAndClearThreads();
}

std::future<int> ThreadPool::ScheduleTask(std::function<void()> task) {
  if (!accepting_tasks_) {
    throw std::runtime_error("Thread pool cannot accept new tasks");
  }
  Task packaged([task = std::move(task)] {
    task();
    return 0;
  });
  std::future<int> result = packaged.get_future();
  task_event_.Set(tasks_.Push(std::move(packaged)));
  return result;
}

void ThreadPool::Resize(unsigned int threadCount) {
  const std::size_t count = threads_.size();
  if (count < threadCount) {
    AddThreads(threadCount - static_cast<unsigned int>(count));
  } else {
    EndThreads();
    AddThreads(threadCount);
  }
  task_event_.Set(tasks_.Size());
}

bool ThreadPool::HasWaitingThreads() {
  return waiting_threads_ != 0;
}

void ThreadPool::WorkerThread() {
  ++waiting_threads_;
  while (!exit_threads_) {
    if (!task_event_.Wait(MAXIMUM_LOOP_WAIT_INTERVAL)) {
      continue;
    }
    if (paused_) {
      // The event stays set for the workers to go on at `Start`; they need not burn the processor until then.
      std::this_thread::sleep_for(kPausedLookInterval);
      continue;
    }
    // The event is reset before the pop: a worker takes one task per signal, so a burst can leave tasks queued until
    // the next signal. Callers depend on this pacing.
    task_event_.Reset();
    TryPopTaskAndExecute();
  }
  --waiting_threads_;
}

void ThreadPool::AddThreads(unsigned int count) {
  for (unsigned int i = 0; i < count; ++i) {
    threads_.emplace_back();
    try {
      threads_.back() = StartThread([this] { WorkerThread(); });
    } catch (...) {
      threads_.pop_back();
      throw;
    }
  }
}

void ThreadPool::RemoveThreads(unsigned int count) {
  const std::size_t before = threads_.size();
  EndThreads();
  AddThreads(count < before ? static_cast<unsigned int>(before) - count : 0);
}

void ThreadPool::JoinAndClearThreads() {
  for (std::thread& thread : threads_) {
    if (thread.get_id() == std::this_thread::get_id()) {
      throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    if (thread.joinable()) {
      thread.join();
    }
  }
  threads_.clear();
}

void ThreadPool::TryPopTaskAndExecute() {
  --waiting_threads_;
  Task task;
  if (tasks_.TryPop(task)) {
    task();
  }
  ++waiting_threads_;
}

void ThreadPool::EndThreads() {
  exit_threads_ = true;
  JoinAndClearThreads();
  exit_threads_ = false;
}

}  // namespace Zelto::Utilities
