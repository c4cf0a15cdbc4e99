#include "zelto/threading/serial_task_queue.h"

#include "zelto/threading/task_pool.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

namespace Zelto::Utilities {

/// The one body of `SerialTaskQueue`.
///
/// A task runs on the thread that waits for it, or on the pool once it is due. A new task is not due yet; while there
/// are such tasks the pool watches the queue, and what is still there after a whole tick becomes due.
class PooledTaskQueue final : public SerialTaskQueue,
                              public PoolJob,
                              public PoolWatcher,
                              public std::enable_shared_from_this<PooledTaskQueue> {
 public:
  void RunOnPool() noexcept override;
  void OnTick() noexcept override;

 private:
  using Lock = std::unique_lock<std::mutex>;

  std::shared_ptr<SerialTaskQueue> Self() noexcept override { return shared_from_this(); }
  void Enqueue(std::shared_ptr<TaskState> task) override;
  void Kick(TaskState& task) noexcept override;
  void WaitFor(TaskState& task) override;
  void Continue(TaskState& task, std::shared_ptr<TaskState> continuation) override;

  static void Begin(std::shared_ptr<TaskState> continuation);
  bool IsDue() const noexcept { return first_ && first_->position_ <= due_; }
  void RunFirst(Lock& lock, const TaskState* kept) noexcept;
  void LeaveRest() noexcept;
  void SubmitOnce() noexcept;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::shared_ptr<TaskState> first_;
  TaskState* last_ = nullptr;
  std::uint64_t issued_ = 0;     // position of the last task issued
  std::uint64_t due_ = 0;        // tasks up to this position are the pool's to run
  std::uint64_t seen_last_ = 0;  // position of the last task at the last tick
  int waiting_ = 0;
  bool running_ = false;
  bool submitted_ = false;
  bool watched_ = false;
};

std::shared_ptr<SerialTaskQueue> SerialTaskQueue::Create() {
  return std::make_shared<PooledTaskQueue>();
}

void PooledTaskQueue::Enqueue(std::shared_ptr<TaskState> task) {
  TaskPool::Instance().EnsureStarted();
  const std::lock_guard guard(mutex_);
  task->queued_ = true;
  task->position_ = ++issued_;
  if (task->kicked_) {
    due_ = issued_;
  }
  TaskState* const added = task.get();
  (first_ ? last_->next_ : first_) = std::move(task);
  last_ = added;
  if (waiting_ > 0) {
    changed_.notify_all();
  }
  if (!running_) {
    LeaveRest();
  }
}

void PooledTaskQueue::Kick(TaskState& task) noexcept {
  const std::lock_guard guard(mutex_);
  task.kicked_ = true;
  if (!task.queued_ || task.IsDone()) {
    return;
  }
  due_ = std::max(due_, task.position_);
  if (!running_) {
    LeaveRest();
  }
}

void PooledTaskQueue::WaitFor(TaskState& task) {
  Lock lock(mutex_);
  bool ran = false;
  while (!task.IsDone()) {
    if (task.queued_ && !running_) {
      RunFirst(lock, &task);
      ran = true;
    } else {
      ++waiting_;
      changed_.wait(lock);
      --waiting_;
    }
  }
  if (ran && !running_) {
    LeaveRest();
  }
}

void PooledTaskQueue::Continue(TaskState& task, std::shared_ptr<TaskState> continuation) {
  {
    const std::lock_guard guard(mutex_);
    if (!task.IsDone()) {
      task.continuations_.push_back(std::move(continuation));
    }
  }
  if (continuation) {
    Begin(std::move(continuation));
  } else {
    Kick(task);
  }
}

void PooledTaskQueue::Begin(std::shared_ptr<TaskState> continuation) {
  TaskState& task = *continuation;
  const std::shared_ptr<SerialTaskQueue> queue = task.queue_;
  {
    auto& own = static_cast<PooledTaskQueue&>(*queue);
    const std::lock_guard guard(own.mutex_);
    task.kicked_ = true;
  }
  static_cast<PooledTaskQueue&>(*queue).Enqueue(std::move(continuation));
}

void PooledTaskQueue::RunOnPool() noexcept {
  Lock lock(mutex_);
  submitted_ = false;
  while (!running_ && IsDue()) {
    RunFirst(lock, nullptr);
  }
  if (!running_) {
    LeaveRest();
  }
}

void PooledTaskQueue::OnTick() noexcept {
  const std::lock_guard guard(mutex_);
  watched_ = false;
  if (running_ || !first_) {
    return;
  }
  due_ = std::max(due_, seen_last_);
  seen_last_ = issued_;
  LeaveRest();
}

/// Runs the first task. Called and left with the lock held, which is released meanwhile: also where the task may go,
/// for its result is the caller's and may do anything. `kept` is a task that the calling thread keeps alive.
void PooledTaskQueue::RunFirst(Lock& lock, const TaskState* kept) noexcept {
  std::shared_ptr<TaskState> task = std::move(first_);
  first_ = std::move(task->next_);
  running_ = true;
  lock.unlock();
  task->Execute();
  lock.lock();
  running_ = false;
  task->done_.store(true, std::memory_order_release);
  std::vector<std::shared_ptr<TaskState>> continuations = std::move(task->continuations_);
  if (waiting_ > 0) {
    changed_.notify_all();
  }
  if (continuations.empty() && task.get() == kept) {
    return;
  }
  lock.unlock();
  for (std::shared_ptr<TaskState>& continuation : continuations) {
    Begin(std::move(continuation));
  }
  task.reset();
  lock.lock();
}

/// Sees to it that what is queued runs some time. Called with the lock held, while no task runs.
void PooledTaskQueue::LeaveRest() noexcept {
  if (IsDue()) {
    SubmitOnce();
  } else if (first_ && !watched_) {
    watched_ = true;
    TaskPool::Instance().Watch(shared_from_this());
  }
}

void PooledTaskQueue::SubmitOnce() noexcept {
  if (!submitted_) {
    submitted_ = true;
    TaskPool::Instance().Submit(shared_from_this());
  }
}

TaskState::TaskState(std::shared_ptr<SerialTaskQueue> queue) noexcept : queue_(std::move(queue)) {}

TaskState::~TaskState() = default;

void TaskState::Wait() {
  if (!IsDone()) {
    queue_->WaitFor(*this);
  }
}

void TaskState::Kick() noexcept {
  if (!IsDone()) {
    queue_->Kick(*this);
  }
}

void TaskState::RemoveOwner() noexcept {
  if (owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    Kick();
  }
}

void TaskState::ContinueWith(std::shared_ptr<TaskState> continuation) {
  queue_->Continue(*this, std::move(continuation));
}

std::shared_ptr<SerialTaskQueue> TaskState::MakeQueueOfItsOwn() {
  TaskPool::Instance().EnsureStarted();
  return SerialTaskQueue::Create();
}

}  // namespace Zelto::Utilities
