/// @file
/// Tasks that run one after another.
#pragma once

#include <zelto/export.h>
#include <zelto/threading/task.h>

#include <memory>
#include <type_traits>
#include <utility>

namespace Zelto::Utilities {

/// A queue whose tasks run one at a time, in the order in which they were issued. See `Task` for which thread runs
/// them.
///
/// Any thread may issue tasks. Tasks keep their queue alive: letting go of a queue does not cancel what is in it.
/// Example: `auto answer = queue->Run([] { return 42; }); answer.get();`
class ZELTO_API SerialTaskQueue {
 public:
  virtual ~SerialTaskQueue() = default;

  /// Makes an empty queue.
  static std::shared_ptr<SerialTaskQueue> Create();

  /// Issues a task. @throws std::system_error when the pool's first thread cannot be started
  template <class Function>
  auto Run(Function&& function) -> Task<std::invoke_result_t<std::decay_t<Function>&>> {
    using Body = std::decay_t<Function>;
    using Result = std::invoke_result_t<Body&>;
    auto state = std::make_shared<TaskBody<Result, Body>>(Self(), std::forward<Function>(function));
    Task<Result> task(state);
    Enqueue(std::move(state));
    return task;
  }

 private:
  friend class TaskState;

  virtual std::shared_ptr<SerialTaskQueue> Self() noexcept = 0;
  virtual void Enqueue(std::shared_ptr<TaskState> task) = 0;
  virtual void Kick(TaskState& task) noexcept = 0;
  virtual void WaitFor(TaskState& task) = 0;
  virtual void Continue(TaskState& task, std::shared_ptr<TaskState> continuation) = 0;
};

}  // namespace Zelto::Utilities
