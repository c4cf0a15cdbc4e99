/// @file
/// A timer on the system's timer queue.
#pragma once

#include <zelto/export.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Zelto::Platform {
class TimerQueue;
}

namespace Zelto::Utilities {

/// Runs an action once or periodically on a thread of the system's timer queue.
///
/// The action runs on one thread at a time; a run that is due while another is in progress follows it. It must not let
/// an exception out: nothing catches it there, and the process ends.
///
/// Any thread may call it, its action too; it is destroyed when no other call is in progress. The queue is one for all
/// timers of the process, made for the first one that starts and gone with the last one that did. Windows: do not keep
/// a timer in a static object of a DLL, since a DLL's static objects go when its threads have gone already.
class ZELTO_API Timer {
 public:
  /// Not running, enabled, with an empty action.
  Timer();

  /// As `Timer()` and `Start`.
  Timer(int intervalMilliseconds, bool singleShot, std::function<void()> action);

  /// As `Stop`. An action may destroy its own timer.
  ~Timer();
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  /// Starts the timer; the action runs first when one interval is over.
  ///
  /// @param intervalMilliseconds  0: one run at once. A negative one counts as unsigned: -1 never comes.
  /// @param singleShot            runs the action once; the timer counts as running until `Stop` all the same
  /// @param action                an empty one throws the bad-function-call error when the timer fires
  /// @throws std::runtime_error   "Timer already started."; the running timer is untouched, and no run of its action is
  ///                              waited for
  /// @throws Win32Exception       "CreateTimerQueueTimer failed.", or "CreateTimerQueue failed." for the first timer
  ///
  /// Windows: `CreateTimerQueueTimer`.
  void Start(int intervalMilliseconds, bool singleShot, std::function<void()> action);

  /// Stops the timer, if it is running, and waits for a run of the action in progress; none begins afterwards.
  ///
  /// Called by the timer's own action it cannot wait: then it returns at once, and this run is the last one. A later
  /// `Stop` of another thread waits for that run; a run after a new `Start` does not.
  ///
  /// @throws Win32Exception     "DeleteTimerQueueTimer failed."; the action does not run any more
  /// @throws std::system_error  called by the timer's own action, when the system has no thread to give
  ///
  /// Windows: `DeleteTimerQueueTimer`, waiting.
  void Stop();

  /// True from `Start` to `Stop`, also after the run of a single shot.
  bool IsRunning() const noexcept;

  bool IsEnabled() const noexcept;

  /// A timer that is not enabled keeps firing but skips its action. A run in progress goes on.
  void SetEnabled(bool enabled) noexcept;

 protected:
  /// What the timer queue calls. `parameter` points to the `std::shared_ptr` that `Start` made for it.
  static void TimerCallback(void* parameter, unsigned char timerFired);

 private:
  class TimerContext;

  void Delete(std::unique_lock<std::mutex>& lock);
  void DeleteLater();
  void WaitForLastRuns(std::unique_lock<std::mutex>& lock);

  std::mutex lock_;  // guards what is not atomic; never held while anything waits or the action runs
  std::condition_variable delete_ended_;
  bool deleting_ = false;
  std::atomic<void*> timer_handle_{nullptr};
  std::shared_ptr<const std::function<void()>> action_;
  std::atomic<bool> enabled_{true};
  std::shared_ptr<TimerContext> context_;  // of the last `Start`, also of one that was refused
  std::unique_ptr<std::shared_ptr<TimerContext>> callback_parameter_;  // with the running timer's context
  std::vector<std::shared_ptr<TimerContext>> last_runs_;  // whose action stopped the timer and may still be running
  std::shared_ptr<Platform::TimerQueue> queue_;
};

}  // namespace Zelto::Utilities
