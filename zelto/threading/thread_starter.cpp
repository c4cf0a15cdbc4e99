#include "zelto/threading/thread_starter.h"

#include "zelto/platform/modules.h"
#include "zelto/threading/failure_report.h"
#include "zelto/threading/task_pool.h"

#include <memory>
#include <utility>

namespace Zelto::Utilities {

namespace {

class JoinJob final : public PoolJob {
 public:
  void RunOnPool() noexcept override { thread.join(); }

  std::thread thread;
};

}  // namespace

std::thread StartThread(std::function<void()> body) {
  Platform::PinModule();
  return std::thread([body = std::move(body)]() noexcept {
    try {
      body();
    } catch (...) {
      ReportCurrentException(L"Exception ends a thread");
    }
  });
}

void JoinLater(std::thread thread) noexcept {
  if (!thread.joinable()) {
    return;
  }
  try {
    TaskPool::Instance().EnsureStarted();
    const auto job = std::make_shared<JoinJob>();
    job->thread = std::move(thread);
    TaskPool::Instance().Submit(job);
  } catch (...) {
    ReportCurrentException(L"Failed to have a thread joined");
    thread.detach();
  }
}

}  // namespace Zelto::Utilities
