#include "zelto/platform/timer_queue.h"

#include "zelto/platform/modules.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zelto::Platform {
namespace {

using Clock = std::chrono::steady_clock;

struct QueuedTimer;
using Schedule = std::multimap<Clock::time_point, QueuedTimer*>;

struct QueuedTimer {
  TimerQueue::Callback callback = nullptr;
  void* parameter = nullptr;
  std::chrono::milliseconds period{};
  Schedule::iterator position;  // in the schedule; its end when the timer has nothing to come
  std::uint64_t late = 0;       // expiries that passed while the callback ran
  bool running = false;
  bool deleted = false;
};

/// The threads take turns: one idle thread keeps the time. When a timer is due it hands that role on and runs the
/// callback itself, so that no callback waits for a thread to be woken.
class PosixTimerQueue final : public TimerQueue {
 public:
  /// @throws std::system_error, std::bad_alloc
  PosixTimerQueue() { AddThread(); }

  ~PosixTimerQueue() override {
    {
      const std::lock_guard lock(lock_);
      quit_ = true;
    }
    schedule_changed_.notify_all();
    time_keeper_left_.notify_all();
    // No thread is added any more: that happens under the lock and before `quit_` is seen.
    for (std::thread& thread : threads_) {
      thread.join();
    }
  }

  ErrorCode CreateTimer(void*& timer, Callback callback, void* parameter, std::uint32_t due_ms,
                        std::uint32_t period_ms) noexcept override {
    const Clock::time_point due = Clock::now() + std::chrono::milliseconds(due_ms);
    try {
      auto made = std::make_unique<QueuedTimer>();
      made->callback = callback;
      made->parameter = parameter;
      made->period = std::chrono::milliseconds(period_ms);
      const std::lock_guard lock(lock_);
      made->position = schedule_.end();
      QueuedTimer* const key = made.get();
      const auto entry = timers_.emplace(key, std::move(made)).first;
      if (due_ms != kInfinite) {
        try {
          key->position = schedule_.emplace(due, key);
        } catch (...) {
          timers_.erase(entry);
          throw;
        }
        if (key->position == schedule_.begin()) {
          schedule_changed_.notify_one();
        }
      }
      timer = key;
      return kSuccess;
    } catch (const std::bad_alloc&) {
      return kNotEnoughMemory;
    }
  }

  ErrorCode DeleteTimer(void* timer) noexcept override {
    std::unique_lock lock(lock_);
    const auto found = timers_.find(timer);
    if (found == timers_.end()) {
      return kInvalidHandle;
    }
    const auto deleted = timers_.extract(found);
    QueuedTimer& last = *deleted.mapped();
    last.deleted = true;
    if (last.position != schedule_.end()) {
      schedule_.erase(last.position);
    }
    callback_ended_.wait(lock, [&last] { return !last.running; });
    return kSuccess;
  }

 private:
  static constexpr std::size_t kMaximumThreads = 500;

  void AddThread() {
    threads_.reserve(threads_.size() + 1);
    threads_.emplace_back([this] { Run(); });
  }

  void Run() {
    std::unique_lock lock(lock_);
    while (!quit_) {
      if (has_time_keeper_) {
        ++idle_threads_;
        time_keeper_left_.wait(lock);
        --idle_threads_;
      } else if (QueuedTimer* const timer = KeepTime(lock)) {
        RunCallbacks(*timer, lock);
      }
    }
  }

  /// Waits until a timer is due that is not running already, and hands the role on. Null when the queue goes.
  QueuedTimer* KeepTime(std::unique_lock<std::mutex>& lock) {
    has_time_keeper_ = true;
    QueuedTimer* due = nullptr;
    while (!quit_ && (due = TakeDueTimer()) == nullptr) {
      if (schedule_.empty()) {
        schedule_changed_.wait(lock);
      } else {
        const Clock::time_point next = schedule_.begin()->first;
        schedule_changed_.wait_until(lock, next);
      }
    }
    has_time_keeper_ = false;
    if (due != nullptr) {
      HandTimeKeepingOn();
    }
    return due;
  }

  QueuedTimer* TakeDueTimer() {
    const Clock::time_point now = Clock::now();
    while (!schedule_.empty() && schedule_.begin()->first <= now) {
      QueuedTimer& timer = *schedule_.begin()->second;
      auto entry = schedule_.extract(schedule_.begin());
      timer.position = schedule_.end();
      if (timer.period.count() != 0) {
        entry.key() = NextExpiry(entry.key(), timer.period, now);
        timer.position = schedule_.insert(std::move(entry));
      }
      if (!timer.running) {
        timer.running = true;
        return &timer;
      }
      ++timer.late;
    }
    return nullptr;
  }

  /// Keeps to the timer's beat. Expiries that passed while nobody could keep the time are left out.
  static Clock::time_point NextExpiry(Clock::time_point last, std::chrono::milliseconds period, Clock::time_point now) {
    const Clock::time_point next = last + period;
    return next > now ? next : next + period * ((now - next) / period + 1);
  }

  /// Without a further thread the time stands still until a callback ends.
  void HandTimeKeepingOn() {
    if (idle_threads_ > 0) {
      time_keeper_left_.notify_one();
    } else if (threads_.size() < kMaximumThreads) {
      try {
        AddThread();
      } catch (const std::system_error&) {
      } catch (const std::bad_alloc&) {
      }
    }
  }

  void RunCallbacks(QueuedTimer& timer, std::unique_lock<std::mutex>& lock) {
    while (true) {
      lock.unlock();
      timer.callback(timer.parameter, 1);
      lock.lock();
      if (timer.late == 0 || timer.deleted || quit_) {
        break;
      }
      --timer.late;
    }
    timer.running = false;
    callback_ended_.notify_all();
  }

  std::mutex lock_;  // guards everything below; never held while a callback runs
  std::condition_variable schedule_changed_;
  std::condition_variable time_keeper_left_;
  std::condition_variable callback_ended_;
  Schedule schedule_;
  std::unordered_map<void*, std::unique_ptr<QueuedTimer>> timers_;
  std::vector<std::thread> threads_;
  std::size_t idle_threads_ = 0;
  bool has_time_keeper_ = false;
  bool quit_ = false;
};

}  // namespace

ErrorCode TimerQueue::Create(std::shared_ptr<TimerQueue>& queue) noexcept {
  PinModule();
  try {
    queue = std::make_shared<PosixTimerQueue>();
    return kSuccess;
  } catch (const std::system_error&) {
    return kNotEnoughMemory;
  } catch (const std::bad_alloc&) {
    return kNotEnoughMemory;
  }
}

}  // namespace Zelto::Platform
