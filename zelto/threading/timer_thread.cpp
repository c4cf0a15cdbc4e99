#include "zelto/threading/timer_thread.h"

#include "zelto/threading/failure_report.h"
#include "zelto/threading/thread_starter.h"

#include <system_error>
#include <utility>

namespace Zelto::Utilities {

TimerThread::TimerThread(std::function<void()> action, unsigned int intervalMilliseconds)
    : action_(std::make_shared<const std::function<void()>>(std::move(action))), interval_(intervalMilliseconds) {}

TimerThread::~TimerThread() {
  stopped_ = true;
  TimerThread::SetEvent();
  JoinThread();
}

void TimerThread::Start() {
  if (!stopped_) {
    TryRestart();
    return;
  }
  JoinThread();  // of a thread that its own action has stopped
  stopped_ = false;
  try {
    thread_ = std::make_unique<std::thread>();
    *thread_ = StartThread([this] { ThreadLoop(); });
  } catch (...) {
    thread_.reset();
    stopped_ = true;
    throw;
  }
}

void TimerThread::Stop() {
  stopped_ = true;
  SetEvent();
  JoinThread();
}

void TimerThread::Pause() {
  paused_ = true;
}

void TimerThread::SetEvent() {
  wake_event_.Set();
}

unsigned int TimerThread::GetInterval() {
  return interval_;
}

void TimerThread::SetInterval(unsigned int intervalMilliseconds) {
  const std::lock_guard lock(action_lock_);
  interval_ = intervalMilliseconds;
}

void TimerThread::SetAction(std::function<void()> action) {
  auto replacement = std::make_shared<const std::function<void()>>(std::move(action));
  const std::lock_guard lock(action_lock_);
  action_.swap(replacement);
}

bool TimerThread::HasExceptions() {
  const std::lock_guard lock(exceptions_lock_);
  return !exceptions_.empty();
}

std::list<std::exception_ptr> TimerThread::ResetExceptions() {
  std::list<std::exception_ptr> collected;
  const std::lock_guard lock(exceptions_lock_);
  collected.swap(exceptions_);
  return collected;
}

void TimerThread::TryRestart() {
  if (paused_.exchange(false)) {
    wake_event_.Set();
  }
}

void TimerThread::ThreadLoop() {
  loop_thread_ = std::this_thread::get_id();
  while (!stopped_) {
    if (wake_event_.Wait(interval_)) {
      wake_event_.Reset();
    }
    if (!paused_) {
      RunAction();
    }
  }
  loop_thread_ = std::thread::id();
}

void TimerThread::RunAction() {
  const std::lock_guard lock(action_lock_);
  const auto action = action_;  // an action that replaces itself must live until it returns
  if (!*action) {
    return;
  }
  try {
    (*action)();
  } catch (...) {
    try {
      const std::lock_guard exceptions_lock(exceptions_lock_);
      exceptions_.push_back(std::current_exception());
    } catch (...) {
      ReportFailure(L"Exception of a timer thread's action is lost for want of memory");
    }
  }
}

void TimerThread::JoinThread() {
  if (loop_thread_.load() == std::this_thread::get_id()) {
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
  }
  if (thread_ != nullptr) {
    thread_->join();
    thread_.reset();
  }
}

}  // namespace Zelto::Utilities
