#include "tests/support/process_resources.h"
#include "zelto/platform/errors.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/threading/critical_section.h"
#include "zelto/threading/event_access_control.h"
#include "zelto/threading/manual_reset_event.h"
#include "zelto/threading/wait_for_objects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>

namespace Zelto::Utilities {
namespace {

TEST(Events, AnEmptyHandleIsAnError) {
  EXPECT_EQ(WaitForObjects::WaitForSingleObject(SharedHandle(), 0), Platform::kWaitFailed);
  for (const auto operation : {EventAccessControl::SetEvent, EventAccessControl::ResetEvent}) {
    try {
      operation(SharedHandle());
      FAIL();
    } catch (const Win32Exception& error) {
      EXPECT_EQ(error.GetErrorCode(), Platform::kInvalidHandle);
    }
  }
}

// ThreadSanitizer is the judge: elsewhere the number is nearly always there in time.
TEST(ManualResetEvent, WhoResetsItSeesWhatWasDoneBeforeItWasSetAgain) {
  ManualResetEvent event;
  int number = 0;
  std::atomic<bool> is_set_again{false};
  event.Set();
  std::thread setter([&] {
    number = 1;
    event.Set();
    is_set_again.store(true, std::memory_order_relaxed);
  });
  while (!is_set_again.load(std::memory_order_relaxed)) {
    std::this_thread::yield();
  }
  event.Reset();
  EXPECT_EQ(number, 1);
  setter.join();
}

TEST(CriticalSection, ItsOwnerMayTakeItAgainAndOthersMayNot) {
  CriticalSection section;
  std::unique_lock outer(section);
  const auto free_for_others = [&section] {
    bool taken = false;
    std::thread([&] {
      taken = section.try_lock();
      if (taken) {
        section.Unlock();
      }
    }).join();
    return taken;
  };
  { std::lock_guard inner(section); }
  EXPECT_FALSE(free_for_others());
  outer.unlock();
  EXPECT_TRUE(free_for_others());
}

TEST(CriticalSection, LeavesNothingBehind) {
  constexpr std::size_t kCount = 20000;
  const auto memory_after_locking = [] {
    for (std::size_t i = 0; i < kCount; ++i) {
      CriticalSection section;
      const std::lock_guard lock(section);
    }
    return Testing::CountProcessResources().memory_bytes;
  };
  const std::size_t before = memory_after_locking();  // what the first use takes does not count
  EXPECT_LT(memory_after_locking(), before + kCount * ZELTO_BYTES_PER_LOCK);
}

}  // namespace
}  // namespace Zelto::Utilities
