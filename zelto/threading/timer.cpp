#include "zelto/threading/timer.h"

#include "zelto/platform/timer_queue.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/threading/failure_report.h"
#include "zelto/threading/task_pool.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <thread>
#include <utility>

namespace Zelto::Utilities {

namespace {

using Platform::TimerQueue;

/// The queue of all timers: it lives as long as one of them holds it.
std::shared_ptr<TimerQueue> SharedTimerQueue() {
  // Never destroyed, since timers may outlive this module's static objects.
  static std::mutex& lock = *new std::mutex;
  static std::weak_ptr<TimerQueue>& shared = *new std::weak_ptr<TimerQueue>;
  const std::lock_guard guard(lock);
  std::shared_ptr<TimerQueue> queue = shared.lock();
  if (queue == nullptr) {
    const Platform::ErrorCode code = TimerQueue::Create(queue);
    if (code != Platform::kSuccess) {
      throw Win32Exception("CreateTimerQueue failed.", code);
    }
    shared = queue;
  }
  return queue;
}

}  // namespace

/// What a timer shares with its callbacks. It outlives the timer while a callback is in progress.
class Timer::TimerContext {
 public:
  explicit TimerContext(Timer& owner) : owner_(owner) {}

  /// Lets the callbacks run that fired while the timer was being made.
  void MarkStarted() {
    const std::lock_guard lock(lock_);
    started_ = true;
    changed_.notify_all();
  }

  /// No callback runs the action or touches the owner from here on, but for the run in progress.
  void MarkStopped() {
    const std::lock_guard lock(lock_);
    stopped_ = true;
    changed_.notify_all();
  }

  bool RunsOnThisThread() {
    const std::lock_guard lock(lock_);
    return running_thread_ == std::this_thread::get_id();
  }

  bool HasRunInProgress() {
    const std::lock_guard lock(lock_);
    return running_thread_ != std::thread::id();
  }

  /// Waits for the run in progress.
  void WaitForRun() {
    std::unique_lock lock(lock_);
    changed_.wait(lock, [this] { return running_thread_ == std::thread::id(); });
  }

  /// For a timer that the queue does not let go of: callbacks may still come, so what they use stays.
  void KeepForEver(std::unique_ptr<std::shared_ptr<TimerContext>> callback_parameter,
                   std::shared_ptr<TimerQueue> queue) noexcept {
    kept_parameter_ = std::move(callback_parameter);
    kept_queue_ = std::move(queue);
  }

  /// One callback. It never waits for another one, nor for whoever stops the timer: when a run is in progress, it
  /// leaves its own run to that thread. So the timer queue's threads are not used up by one slow action, and `Stop`
  /// may wait for all callbacks.
  void Fire() {
    std::unique_lock lock(lock_);
    changed_.wait(lock, [this] { return started_ || stopped_; });
    ++runs_due_;
    if (running_thread_ != std::thread::id()) {
      return;
    }
    running_thread_ = std::this_thread::get_id();
    for (; !stopped_ && runs_due_ > 0; --runs_due_) {
      if (owner_.enabled_) {
        auto action = owner_.action_;  // it may destroy the timer
        lock.unlock();
        (*action)();
        action.reset();  // perhaps the last of it: what goes with it may call the timer
        lock.lock();
      }
    }
    running_thread_ = std::thread::id();
    changed_.notify_all();
  }

 private:
  Timer& owner_;
  std::mutex lock_;
  std::condition_variable changed_;
  bool started_ = false;
  bool stopped_ = false;
  std::uint64_t runs_due_ = 0;
  std::thread::id running_thread_;                                 // none while the action does not run
  std::unique_ptr<std::shared_ptr<TimerContext>> kept_parameter_;  // to this object: a circle, on purpose
  std::shared_ptr<TimerQueue> kept_queue_;
};

Timer::Timer() = default;

Timer::Timer(int intervalMilliseconds, bool singleShot, std::function<void()> action) {
  Start(intervalMilliseconds, singleShot, std::move(action));
}

Timer::~Timer() {
  try {
    Stop();
  } catch (const std::exception& error) {
    ReportFailure(L"Failed to delete a timer of the timer queue", error);
    (*callback_parameter_)->KeepForEver(std::move(callback_parameter_), queue_);
  }
}

void Timer::Start(int intervalMilliseconds, bool singleShot, std::function<void()> action) {
  const auto context = std::make_shared<TimerContext>(*this);
  auto new_action = std::make_shared<const std::function<void()>>(std::move(action));
  const std::lock_guard lock(lock_);
  context_ = context;
  if (queue_ == nullptr) {
    queue_ = SharedTimerQueue();
  }
  // A refused start has replaced the context already. It waits for no run of the action, and the running timer keeps
  // its own context with its callback parameter.
  if (timer_handle_ != nullptr) {
    throw std::runtime_error("Timer already started.");
  }
  action_.swap(new_action);
  callback_parameter_ = std::make_unique<std::shared_ptr<TimerContext>>(context);
  const auto interval = static_cast<std::uint32_t>(intervalMilliseconds);
  void* handle = nullptr;
  const Platform::ErrorCode code =
      queue_->CreateTimer(handle, &TimerCallback, callback_parameter_.get(), interval, singleShot ? 0 : interval);
  if (code != Platform::kSuccess) {
    callback_parameter_.reset();
    throw Win32Exception("CreateTimerQueueTimer failed.", code);
  }
  timer_handle_ = handle;
  context->MarkStarted();
}

void Timer::Stop() {
  std::unique_lock lock(lock_);
  if (context_ != nullptr) {
    context_->MarkStopped();
  }
  if (timer_handle_ != nullptr) {
    (*callback_parameter_)->MarkStopped();
    if ((*callback_parameter_)->RunsOnThisThread()) {
      DeleteLater();
      return;
    }
    Delete(lock);
  }
  WaitForLastRuns(lock);
}

bool Timer::IsRunning() const noexcept {
  return timer_handle_ != nullptr;
}

bool Timer::IsEnabled() const noexcept {
  return enabled_;
}

void Timer::SetEnabled(bool enabled) noexcept {
  enabled_ = enabled;
}

void Timer::TimerCallback(void* parameter, unsigned char /*timerFired*/) {
  const std::shared_ptr<TimerContext> context = *static_cast<const std::shared_ptr<TimerContext>*>(parameter);
  context->Fire();
}

/// Deletes the queue's timer and waits for its callbacks.
void Timer::Delete(std::unique_lock<std::mutex>& lock) {
  delete_ended_.wait(lock, [this] { return !deleting_; });
  if (timer_handle_ == nullptr) {
    return;  // another thread's `Stop` did it
  }
  deleting_ = true;
  lock.unlock();
  const Platform::ErrorCode code = queue_->DeleteTimer(timer_handle_);
  lock.lock();
  deleting_ = false;
  delete_ended_.notify_all();
  if (code != Platform::kSuccess) {
    throw Win32Exception("DeleteTimerQueueTimer failed.", code);
  }
  timer_handle_ = nullptr;
  callback_parameter_.reset();
}

/// Has another thread delete the queue's timer once the callback that called has returned.
void Timer::DeleteLater() {
  if (deleting_) {
    return;  // another thread's `Stop` waits for this callback
  }
  class DeleteJob final : public PoolJob {
   public:
    void RunOnPool() noexcept override {
      if (queue->DeleteTimer(handle) != Platform::kSuccess) {
        ReportFailure(L"Failed to delete a timer of the timer queue");
        (*parameter)->KeepForEver(std::move(parameter), queue);
      }
    }
    std::shared_ptr<TimerQueue> queue;
    void* handle = nullptr;
    std::unique_ptr<std::shared_ptr<TimerContext>> parameter;
  };
  TaskPool::Instance().EnsureStarted();
  const auto job = std::make_shared<DeleteJob>();
  std::erase_if(last_runs_, [](const auto& context) { return !context->HasRunInProgress(); });
  last_runs_.push_back(*callback_parameter_);
  job->queue = queue_;
  job->handle = timer_handle_.exchange(nullptr);
  job->parameter = std::move(callback_parameter_);
  TaskPool::Instance().Submit(job);
}

/// Waits for the runs that stopped their own timer. One that calls this itself waits for none, as they may for it.
void Timer::WaitForLastRuns(std::unique_lock<std::mutex>& lock) {
  const auto runs_here = [](const auto& context) { return context->RunsOnThisThread(); };
  if (std::any_of(last_runs_.begin(), last_runs_.end(), runs_here)) {
    return;
  }
  while (!last_runs_.empty()) {
    const std::shared_ptr<TimerContext> run = last_runs_.back();
    lock.unlock();
    run->WaitForRun();
    lock.lock();
    std::erase(last_runs_, run);
  }
}

}  // namespace Zelto::Utilities
