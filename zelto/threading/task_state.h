/// @file
/// What stands behind a `Task`. For `task.h`; callers use `Task`.
#pragma once

#include <zelto/export.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace Zelto::Utilities {

class PooledTaskQueue;
class SerialTaskQueue;

/// The shared state of one task: its queue, whether it is done, and what continues it.
class ZELTO_API TaskState {
 public:
  explicit TaskState(std::shared_ptr<SerialTaskQueue> queue) noexcept;
  virtual ~TaskState();
  TaskState(const TaskState&) = delete;
  TaskState& operator=(const TaskState&) = delete;

  bool IsDone() const noexcept { return done_.load(std::memory_order_acquire); }

  /// Waits until the task is done; one that has not begun is run here, after those that stand before it.
  void Wait();

  /// Has the task begun soon on the pool.
  void Kick() noexcept;

  /// Counts the handles of callers. A task whose last one goes is begun at once: nobody can wait for it any more.
  void AddOwner() noexcept { owners_.fetch_add(1, std::memory_order_relaxed); }
  void RemoveOwner() noexcept;
  bool HasSingleOwner() const noexcept { return owners_.load(std::memory_order_acquire) == 1; }

  /// Has `continuation` begun when this task is done.
  void ContinueWith(std::shared_ptr<TaskState> continuation);

  /// Throws what the task threw, if it did. Only once it is done.
  void RethrowFailure() const {
    if (failure_) {
      std::rethrow_exception(failure_);
    }
  }

  /// A queue for one task that no other is ordered with. @throws std::system_error when no thread can be started
  static std::shared_ptr<SerialTaskQueue> MakeQueueOfItsOwn();

 protected:
  /// Runs the body, keeps its result or failure and lets go of the body and all it holds.
  virtual void Execute() noexcept = 0;

  std::exception_ptr failure_;

 private:
  friend class PooledTaskQueue;

  std::atomic<bool> done_ = false;
  std::atomic<int> owners_ = 0;
  // The rest is guarded by the queue's lock.
  bool queued_ = false;
  bool kicked_ = false;
  std::uint64_t position_ = 0;
  const std::shared_ptr<SerialTaskQueue> queue_;
  std::shared_ptr<TaskState> next_;
  std::vector<std::shared_ptr<TaskState>> continuations_;
};

/// A task's state with room for its result.
template <class T>
class TaskResult : public TaskState {
 public:
  using Stored = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

  using TaskState::TaskState;

  Stored& Value() noexcept { return *value_; }

 protected:
  std::optional<Stored> value_;
};

/// A task's state with the function that it runs.
template <class T, class Body>
class TaskBody final : public TaskResult<T> {
 public:
  TaskBody(std::shared_ptr<SerialTaskQueue> queue, Body body)
      : TaskResult<T>(std::move(queue)), body_(std::move(body)) {}

 private:
  void Execute() noexcept override {
    try {
      if constexpr (std::is_void_v<T>) {
        (*body_)();
        this->value_.emplace();
      } else {
        this->value_.emplace((*body_)());
      }
    } catch (...) {
      this->failure_ = std::current_exception();
    }
    body_.reset();
  }

  std::optional<Body> body_;
};

/// One caller's handle on a task's state.
class TaskOwner {
 public:
  TaskOwner() noexcept = default;
  explicit TaskOwner(std::shared_ptr<TaskState> state) noexcept : state_(std::move(state)) { Add(); }
  TaskOwner(const TaskOwner& other) noexcept : state_(other.state_) { Add(); }
  TaskOwner(TaskOwner&& other) noexcept : state_(std::move(other.state_)) {}
  TaskOwner& operator=(TaskOwner other) noexcept {
    state_.swap(other.state_);
    return *this;
  }
  ~TaskOwner() {
    if (state_) {
      state_->RemoveOwner();
    }
  }

  const std::shared_ptr<TaskState>& State() const noexcept { return state_; }

 private:
  void Add() noexcept {
    if (state_) {
      state_->AddOwner();
    }
  }

  std::shared_ptr<TaskState> state_;
};

}  // namespace Zelto::Utilities
