/// @file
/// Writes that nobody waits for. Not installed.
#pragma once

#include <zelto/pipes/async_io_buffer.h>
#include <zelto/platform/message_pipe.h>
#include <zelto/platform/shared_handle.h>
#include <zelto/threading/task_pool.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>

namespace Zelto::Utilities {

/// Sends messages on one pipe without waiting until they are taken, in order.
///
/// A write under way owns its record, event and buffer and shares the handle. It is begun and finished on one thread of
/// the pool, which stays until all writes are done: systems abort a write when the thread that began it ends.
/// Any thread may call.
class DetachedWriter final : public PoolJob, public std::enable_shared_from_this<DetachedWriter> {
 public:
  /// Begins a write and returns once the system has accepted or refused it.
  ///
  /// @param timeout_ms  what `Abandon` grants the write; a thread of the pool is waited for as long, and 5 seconds at
  /// least
  /// @return 0 when accepted, `kTimeout` when no thread came, otherwise the system's error
  /// @throws Win32Exception  "Failed to create event"
  Platform::ErrorCode Write(const SharedHandle& pipe, AsyncIOBuffer buffer, std::uint32_t timeout_ms);

  /// Waits until all writes are done; those that are not within the time-out are cancelled.
  void Drain(std::uint32_t timeout_ms) noexcept;

  /// Has the writes that are not done within the time-out of the last one cancelled. Waits for nothing.
  void Abandon() noexcept;

  void RunOnPool() noexcept override;

 private:
  using Lock = std::unique_lock<std::mutex>;
  using Clock = std::chrono::steady_clock;

  struct Item {
    Item(SharedHandle on, AsyncIOBuffer what) : pipe(std::move(on)), buffer(std::move(what)) {}

    SharedHandle pipe;
    SharedHandle event;
    Platform::OverlappedRecord record;
    AsyncIOBuffer buffer;
    std::optional<Platform::PipeOperation> operation;
    bool begun = false;
    Platform::ErrorCode result = Platform::kIoPending;
  };

  void LimitTo(std::uint32_t timeout_ms) noexcept;
  void BeginNext(Lock& lock) noexcept;
  void WaitForFirst(Lock& lock) noexcept;
  std::uint32_t TimeLeft() const noexcept;
  bool IsIdle() const noexcept { return !active_; }

  std::mutex mutex_;
  std::condition_variable changed_;
  SharedHandle wake_;
  // Lists, so that the thread of the pool, which must not fail, needs no memory to move a write on.
  std::list<std::shared_ptr<Item>> fresh_;
  std::list<std::shared_ptr<Item>> pending_;  // only the thread of the pool changes it
  std::optional<Clock::time_point> end_;      // writes still pending then are cancelled
  std::uint32_t timeout_ms_ = 0;
  bool active_ = false;
};

}  // namespace Zelto::Utilities
