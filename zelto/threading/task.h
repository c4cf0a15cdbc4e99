/// @file
/// A piece of work that runs by itself and whose result can be waited for.
#pragma once

#include <zelto/threading/task_state.h>

#include <future>
#include <memory>
#include <type_traits>
#include <utility>

namespace Zelto::Utilities {

/// A handle on a task: on its result, or on the exception that ended it.
///
/// Tasks of one queue (for example of one pipe client) run one after another, in the order in which they were issued;
/// tasks of different queues run at the same time. A task is begun by whichever comes first:
/// - somebody waits for it (`get`, `wait`): the waiting thread then runs the queue's earlier tasks and the task itself,
///   without a switch to another thread;
/// - its last handle is dropped, `is_done` asks, or `then` continues it: a thread of the library's pool runs it at
/// once;
/// - a few milliseconds have passed: a thread of the pool runs it.
///
/// Handles are copyable, all copies share one task, and dropping them neither cancels the task nor waits for it.
/// Different handles may be used on different threads at the same time. Every operation but destruction, assignment
/// and `valid` throws `std::future_error` (`no_state`) on an empty handle.
template <class T>
class Task {
 public:
  /// An empty handle.
  Task() noexcept = default;

  /// A handle on an existing state; for `SerialTaskQueue`.
  explicit Task(std::shared_ptr<TaskResult<T>> state) noexcept : owner_(std::move(state)) {}

  /// True when there is a task behind the handle.
  bool valid() const noexcept { return owner_.State() != nullptr; }

  /// Waits for the result and returns a copy of it, or throws what the task threw. May be called any number of times,
  /// by any copy. A task must not wait for one that stands behind it in its own queue.
  T get() const& {
    State().Wait();
    State().RethrowFailure();
    if constexpr (!std::is_void_v<T>) {
      return State().Value();
    }
  }

  /// The same on a handle that is about to go, as in `client.ReadMessage().get()`: the result is moved out when no
  /// other handle shares it.
  T get() && {
    State().Wait();
    State().RethrowFailure();
    if constexpr (!std::is_void_v<T>) {
      if (State().HasSingleOwner()) {
        return std::move(State().Value());
      }
      return State().Value();
    }
  }

  /// Waits until the task is done, whether it succeeded or not.
  void wait() const { State().Wait(); }

  /// True when the task is done, whether it succeeded or not. Never waits.
  bool is_done() const {
    const bool done = State().IsDone();
    if (!done) {
      State().Kick();
    }
    return done;
  }

  /// Continues the task: when it is done, `continuation` runs on a thread of the pool, or on one that already waits for
  /// the task that this returns.
  ///
  /// @param continuation  takes the result (nothing for `Task<void>`), and is left out when the task failed: the new
  ///                      task fails alike then. Or takes the finished `Task<T>` itself, and runs in either case.
  /// @return the task of the continuation, with its result or the exception that left it
  template <class Function>
  auto then(Function&& continuation) const {
    using Callable = std::decay_t<Function>;
    auto body = [antecedent = *this, callable = Callable(std::forward<Function>(continuation))]() mutable {
      if constexpr (kTakesResult<Callable>) {
        if constexpr (std::is_void_v<T>) {
          std::move(antecedent).get();
          return callable();
        } else {
          return callable(std::move(antecedent).get());
        }
      } else {
        return callable(std::move(antecedent));
      }
    };
    using Result = decltype(body());
    TaskState& antecedent = State();
    auto state = std::make_shared<TaskBody<Result, decltype(body)>>(TaskState::MakeQueueOfItsOwn(), std::move(body));
    Task<Result> task(state);
    antecedent.ContinueWith(std::move(state));
    return task;
  }

 private:
  template <class Callable, class Value>
  struct TakesResult : std::is_invocable<Callable&, Value> {};
  template <class Callable>
  struct TakesResult<Callable, void> : std::is_invocable<Callable&> {};
  template <class Callable>
  static constexpr bool kTakesResult = TakesResult<Callable, T>::value;

  TaskResult<T>& State() const {
    if (!valid()) {
      throw std::future_error(std::future_errc::no_state);
    }
    return static_cast<TaskResult<T>&>(*owner_.State());
  }

  TaskOwner owner_;
};

}  // namespace Zelto::Utilities
