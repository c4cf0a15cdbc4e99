/// @file
/// The threads on which tasks run when nobody waits for them. Not installed.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace Zelto::Utilities {

/// A first-in, first-out list of shared objects that needs no memory of its own, so that adding cannot fail. An object
/// is in one list of its type at a time, once.
template <class T>
class JobList {
 public:
  /// What an object must derive from.
  class Link {
   private:
    friend class JobList;
    std::shared_ptr<T> next_;
  };

  void Push(std::shared_ptr<T> job) noexcept {
    T* const added = job.get();
    (tail_ != nullptr ? tail_->Link::next_ : head_) = std::move(job);
    tail_ = added;
    ++size_;
  }

  /// @return null when the list is empty
  std::shared_ptr<T> Pop() noexcept {
    std::shared_ptr<T> job = std::move(head_);
    if (job) {
      head_ = std::move(job->Link::next_);
      tail_ = head_ ? tail_ : nullptr;
      --size_;
    }
    return job;
  }

  bool IsEmpty() const noexcept { return head_ == nullptr; }
  std::size_t Size() const noexcept { return size_; }

 private:
  std::shared_ptr<T> head_;
  T* tail_ = nullptr;
  std::size_t size_ = 0;
};

/// Something that a thread of the pool can run.
class PoolJob : public JobList<PoolJob>::Link {
 public:
  virtual ~PoolJob() = default;

  /// The work. May block for long: the pool adds a thread when none is idle.
  virtual void RunOnPool() noexcept = 0;
};

/// Something that wants to be looked at a little later.
class PoolWatcher : public JobList<PoolWatcher>::Link {
 public:
  virtual ~PoolWatcher() = default;

  /// Called once for each `TaskPool::Watch`. Must not block.
  virtual void OnTick() noexcept = 0;
};

/// One pool for the process, made on first use and never destroyed: its threads end with the process.
///
/// A dispatcher thread adds workers, joins those that ended and ticks for the watchers. While there was activity lately
/// it looks every millisecond, so that to be watched costs no wake-up of a thread; otherwise it sleeps. A worker that
/// has been idle for two seconds ends.
///
/// Any thread may call it. Its lock is the innermost: it calls jobs and watchers without holding it.
class TaskPool {
 public:
  static TaskPool& Instance();

  /// Starts the dispatcher, once. @throws std::system_error when the system has no thread to give
  void EnsureStarted();

  /// Has a job run as soon as possible. It may be submitted again once it runs.
  void Submit(std::shared_ptr<PoolJob> job) noexcept;

  /// Has `OnTick` called a millisecond or so from now. It may be watched again once that was called.
  void Watch(std::shared_ptr<PoolWatcher> watcher) noexcept;

 private:
  using Lock = std::unique_lock<std::mutex>;

  TaskPool() = default;

  void Dispatch();
  void Work(std::list<std::thread>::iterator self);
  bool NeedsWorker() const noexcept { return ready_.Size() > idle_ + starting_; }
  void AddWorker(Lock& lock);
  void JoinEnded(Lock& lock);
  void Tick(Lock& lock);

  std::atomic<bool> started_ = false;
  std::mutex mutex_;
  std::condition_variable work_;
  std::condition_variable dispatch_;
  JobList<PoolJob> ready_;
  JobList<PoolWatcher> watched_;
  std::size_t idle_ = 0;
  std::size_t starting_ = 0;
  bool asleep_ = false;
  std::thread dispatcher_;
  std::list<std::thread> workers_;
  std::list<std::thread> ended_;
};

}  // namespace Zelto::Utilities
