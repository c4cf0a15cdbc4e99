#include "zelto/pipes/detached_writer.h"

#include "zelto/threading/event_access_control.h"
#include "zelto/threading/failure_report.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace Zelto::Utilities {

using Platform::ErrorCode;

namespace {

// Having a thread of the pool is no part of the write: a client's short time-out, or its 0, must not make it fail.
constexpr std::uint32_t kLeastWaitForThreadMs = 5000;

}  // namespace

ErrorCode DetachedWriter::Write(const SharedHandle& pipe, AsyncIOBuffer buffer, std::uint32_t timeout_ms) {
  if (buffer.TransferSize() > std::numeric_limits<std::uint32_t>::max()) {
    return Platform::kInvalidParameter;
  }
  TaskPool::Instance().EnsureStarted();
  const auto item = std::make_shared<Item>(pipe, std::move(buffer));
  Lock lock(mutex_);
  if (!wake_) {
    wake_ = EventAccessControl::CreateLocalEvent();
  }
  timeout_ms_ = timeout_ms;
  end_.reset();
  fresh_.push_back(item);
  if (active_) {
    Platform::SignalEvent(wake_);
  } else {
    active_ = true;
    TaskPool::Instance().Submit(shared_from_this());
  }
  const auto begun = [&item] { return item->begun; };
  if (timeout_ms == Platform::kInfinite) {
    changed_.wait(lock, begun);
  } else if (!changed_.wait_for(lock, std::chrono::milliseconds(std::max(timeout_ms, kLeastWaitForThreadMs)), begun)) {
    const auto waiting = std::find(fresh_.begin(), fresh_.end(), item);
    if (waiting != fresh_.end()) {
      fresh_.erase(waiting);
      return Platform::kTimeout;
    }
    changed_.wait(lock, begun);
  }
  return item->result == Platform::kIoPending ? Platform::kSuccess : item->result;
}

void DetachedWriter::Drain(std::uint32_t timeout_ms) noexcept {
  Lock lock(mutex_);
  if (!active_) {
    return;
  }
  LimitTo(timeout_ms);
  // Not for the pool's thread itself: without a write to begin or to finish it may never have come.
  changed_.wait(lock, [this] { return fresh_.empty() && pending_.empty(); });
}

void DetachedWriter::Abandon() noexcept {
  const Lock lock(mutex_);
  if (active_) {
    LimitTo(timeout_ms_);
  }
}

void DetachedWriter::LimitTo(std::uint32_t timeout_ms) noexcept {
  if (timeout_ms != Platform::kInfinite) {
    end_ = Clock::now() + std::chrono::milliseconds(timeout_ms);
  }
  Platform::SignalEvent(wake_);
}

void DetachedWriter::RunOnPool() noexcept {
  Lock lock(mutex_);
  while (!fresh_.empty() || !pending_.empty()) {
    if (!fresh_.empty()) {
      BeginNext(lock);
    } else {
      WaitForFirst(lock);
    }
  }
  active_ = false;
  changed_.notify_all();
}

void DetachedWriter::BeginNext(Lock& lock) noexcept {
  pending_.splice(pending_.end(), fresh_, fresh_.begin());
  Item& item = *pending_.back();
  lock.unlock();
  item.operation.emplace(item.pipe, item.event, item.record);
  const ErrorCode result =
      item.operation->BeginWrite(item.buffer.TransferData(), static_cast<std::uint32_t>(item.buffer.TransferSize()));
  lock.lock();
  item.result = result;
  item.begun = true;
  changed_.notify_all();
  if (result != Platform::kIoPending) {
    pending_.pop_back();
  }
}

void DetachedWriter::WaitForFirst(Lock& lock) noexcept {
  const std::shared_ptr<Item> item = pending_.front();
  const std::uint32_t time_left = TimeLeft();
  Platform::ClearEvent(wake_);
  lock.unlock();
  const std::array<Platform::Waitable, 2> things{*item->operation, wake_};
  const std::uint32_t ready = Platform::WaitForAny(things, time_left);
  bool done = false;
  if (ready == 0) {
    std::uint32_t count = 0;
    const ErrorCode code = item->operation->Finish(count);
    if (code != Platform::kSuccess) {
      ReportFailure(L"A message that nobody waited for was not sent", "Error writing to named pipe", code);
    }
    done = true;
  } else if (ready != 1) {
    item->operation->Cancel();
    ReportFailure(L"A message that nobody waited for was cancelled");
    done = true;
  }
  lock.lock();
  if (done) {
    pending_.pop_front();
  }
}

std::uint32_t DetachedWriter::TimeLeft() const noexcept {
  if (!end_) {
    return Platform::kInfinite;
  }
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(*end_ - Clock::now()).count();
  return static_cast<std::uint32_t>(std::clamp<std::int64_t>(left, 0, Platform::kInfinite - 1));
}

}  // namespace Zelto::Utilities
