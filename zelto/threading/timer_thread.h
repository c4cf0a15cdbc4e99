/// @file
/// A thread that runs an action again and again.
#pragma once

#include <zelto/export.h>
#include <zelto/threading/critical_section.h>
#include <zelto/threading/manual_reset_event.h>

#include <atomic>
#include <exception>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace Zelto::Utilities {

/// What callers need of a timer thread; see `TimerThread`.
class ZELTO_API ITimerThread {
 public:
  virtual void Start() = 0;
  virtual void Stop() = 0;
  virtual void Pause() = 0;
  virtual void SetEvent() = 0;
  virtual unsigned int GetInterval() = 0;
  virtual void SetInterval(unsigned int intervalMilliseconds) = 0;
  virtual void SetAction(std::function<void()> action) = 0;
  virtual bool HasExceptions() = 0;
  virtual std::list<std::exception_ptr> ResetExceptions() = 0;
  virtual ~ITimerThread() = default;
};

/// Owns one thread that runs an action after each interval.
///
/// The interval is counted from the end of one run to the begin of the next, so the beat drifts by the time that the
/// action takes. What the action throws is collected; the thread goes on.
///
/// `Start`, `Stop` and the destructor are for one controlling thread at a time; any thread, and the action, may call
/// the rest.
class ZELTO_API TimerThread : public ITimerThread {
 public:
  /// Starts no thread.
  ///
  /// @param action                may be empty: then nothing runs
  /// @param intervalMilliseconds  0 runs the action without a pause; 0xFFFFFFFF only on `SetEvent`
  TimerThread(std::function<void()> action, unsigned int intervalMilliseconds);

  /// Stops, with the last run that `Stop` describes. Never run it in the action: that ends the process.
  ~TimerThread() override;
  TimerThread(const TimerThread&) = delete;
  TimerThread& operator=(const TimerThread&) = delete;

  /// Starts the thread; the action runs first when one interval is over. While a thread runs already, it only ends a
  /// pause, and then the action runs at once.
  ///
  /// A pause outlives `Stop`: a thread that was paused, stopped and started again is still paused until the second
  /// `Start`. When `Stop` was called without a thread, or during a run, the first run comes at once.
  ///
  /// @throws std::system_error  the system has no thread to give; or an earlier thread, stopped by its own action, has
  ///                            not ended and this is it (resource deadlock)
  void Start() override;

  /// Ends the thread and waits for it. Unless it is paused the action runs one last time, which is the run in progress
  /// when there is one.
  ///
  /// @throws std::system_error  resource deadlock, when the action calls it; the thread then ends after that run
  void Stop() override;

  /// Skips the action, at each interval, until `Start`. A run in progress goes on.
  void Pause() override;

  /// Has the action run now instead of at the end of the interval.
  void SetEvent() override;

  unsigned int GetInterval() override;

  /// Takes effect at the next wait. Waits for a run in progress, on another thread.
  void SetInterval(unsigned int intervalMilliseconds) override;

  /// Replaces the action. Waits for a run in progress, on another thread; an action that replaces itself runs to its
  /// end.
  void SetAction(std::function<void()> action) override;

  /// True when the action has thrown since the last `ResetExceptions`.
  bool HasExceptions() override;

  /// Hands over what the action has thrown, one for each run that threw, in their order, and forgets it. None is lost
  /// to a run at the same time. The owner of an action that throws for ever must call it now and then.
  std::list<std::exception_ptr> ResetExceptions() override;

 protected:
  /// What `Start` does while a thread runs: ends a pause and has the action run at once; without a pause nothing.
  virtual void TryRestart();

 private:
  void ThreadLoop();
  void RunAction();
  void JoinThread();

  std::atomic<bool> stopped_{true};
  std::atomic<bool> paused_{false};
  ManualResetEvent wake_event_;
  CriticalSection action_lock_;  // held while the action runs; guards action_, and changes of interval_
  std::shared_ptr<const std::function<void()>> action_;
  std::atomic<unsigned int> interval_;
  std::unique_ptr<std::thread> thread_;
  std::atomic<std::thread::id> loop_thread_{};  // none while no thread is in the loop
  std::mutex exceptions_lock_;
  std::list<std::exception_ptr> exceptions_;
};

}  // namespace Zelto::Utilities
