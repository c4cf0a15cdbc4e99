/// @file
/// A fixed set of threads that run callers' tasks.
#pragma once

#include <zelto/export.h>
#include <zelto/threading/concurrent_queue.h>
#include <zelto/threading/work_signal.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>
#include <thread>
#include <vector>

namespace Zelto::Utilities {

/// What callers need of a pool of threads; see `ThreadPool`.
class ZELTO_API IThreadPool {
 public:
  virtual ~IThreadPool() = default;
  virtual void Start() = 0;
  virtual void Pause() = 0;
  virtual void Stop() = 0;
  virtual void WaitAndStop() = 0;
  virtual std::future<int> ScheduleTask(std::function<void()> task) = 0;
  virtual void Resize(unsigned int threadCount) = 0;
  virtual bool HasWaitingThreads() = 0;
};

/// Runs tasks on worker threads, in the order in which they were scheduled, by whichever thread.
///
/// Any thread may call `ScheduleTask` and `HasWaitingThreads`. The other operations and the destructor are for one
/// controlling thread. Run on a worker of the same pool, those that join fail with the standard resource-deadlock
/// error, and the destructor ends the process.
///
/// Pacing: a worker takes one task for each time that it is woken, and it takes the signal back first. When tasks are
/// scheduled faster than workers wake, some stay in the queue beside idle workers until the pool is signalled again: by
/// the next `ScheduleTask`, `Start` or `Resize`, or by `WaitAndStop`. Callers depend on this pacing.
class ZELTO_API ThreadPool : public IThreadPool {
 public:
  /// How often `WaitAndStop` gives a queue that is not empty more time.
  static const unsigned int MAXIMUM_WAIT_ATTEMPTS_BEFORE_CLOSE = 10;
  /// How long it waits each time, in milliseconds.
  static const unsigned int WAIT_INTERVAL_BETWEEN_ATTEMPTS_TO_CLOSE = 500;
  /// After how many milliseconds an idle worker looks whether it shall end.
  static const unsigned int MAXIMUM_LOOP_WAIT_INTERVAL = 100;

  /// Starts the workers, which idle; tasks are accepted after `Start`.
  ///
  /// @throws std::system_error  the system has no thread to give
  explicit ThreadPool(unsigned int threadCount);

  /// As `WaitAndStop`, so with tasks in the queue it may take five seconds and the time of the running tasks. Tasks
  /// that are still queued then are dropped as by `Stop`. A class that overrides `WorkerThread` stops the pool in its
  /// own destructor.
  ~ThreadPool() override;
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  /// Accepts tasks from now on, and ends a pause. Makes no threads: after a stop, tasks wait until `Resize` does.
  void Start() override;

  /// Lets no worker take a further task until `Start`. Tasks are still accepted.
  void Pause() override;

  /// Accepts no more tasks, drops the queued ones, waits for the running ones, and ends all workers. The futures of
  /// dropped tasks report a broken promise.
  void Stop() override;

  /// Accepts no more tasks, gives the queued ones up to about five seconds to be taken, waits for the running ones, and
  /// ends all workers. What was not taken stays in the queue.
  ///
  /// It signals the workers once each half second, so the pacing above holds here as well.
  void WaitAndStop() override;

  /// Queues a task.
  ///
  /// @param task  runs on a worker. What it throws, or the bad-function-call error of an empty one, its future throws.
  /// @return a future that is ready when the task has run, with the value 0; it reports a broken promise when the task
  ///         is dropped
  /// @throws std::runtime_error  "Thread pool cannot accept new tasks": before `Start` or after a stop
  std::future<int> ScheduleTask(std::function<void()> task) override;

  /// Changes the number of workers. To fewer, and to the same number, it ends all workers after their running tasks and
  /// starts new ones; the queue stays. After a stop call `Start` first: until then new workers end at once.
  ///
  /// @throws std::system_error  the system has no thread to give; the workers made so far stay
  void Resize(unsigned int threadCount) override;

  /// True when at least one worker lives and runs no task.
  bool HasWaitingThreads() override;

  /// What each worker runs until the pool ends it. While the pool is paused and signalled, a worker looks again each
  /// millisecond.
  virtual void WorkerThread();

 protected:
  /// Starts `count` more workers.
  void AddThreads(unsigned int count);

  /// Ends all workers and starts `count` fewer; none when there are not as many.
  void RemoveThreads(unsigned int count);

  /// Waits for all workers to end. They do so only when they were told to.
  void JoinAndClearThreads();

  /// Runs the task at the front of the queue, if there is one, on the calling worker.
  void TryPopTaskAndExecute();

 private:
  using Task = std::packaged_task<int()>;

  void EndThreads();

  std::vector<std::thread> threads_;  // for the controlling thread alone
  ConcurrentQueue<Task> tasks_;
  WorkSignal task_event_;
  std::atomic<bool> exit_threads_{false};
  std::atomic<bool> accepting_tasks_{false};
  std::atomic<bool> paused_{false};
  std::atomic<std::int32_t> waiting_threads_{0};
};

}  // namespace Zelto::Utilities
