#include "zelto/http/openssl_locks.h"

#include "zelto/platform/errors.h"
#include "zelto/platform/modules.h"
#include "zelto/platform/process.h"
#include "zelto/platform/system_mutex.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <atomic>

namespace Zelto::Utilities {
namespace {

using LibraryApi::CRYPTO_THREADID;
using LibraryApi::CRYPTO_THREADID_set_numeric_function;

// The name of the source, as OpenSSL's allocator expects one.
constexpr char kSource[] = "Source\\CurlWrapper.cpp";

// One mutex for each of OpenSSL's locks, in memory of OpenSSL's own. Read by the callbacks, on any thread.
std::atomic<void**> mutexes{nullptr};
std::atomic<CRYPTO_THREADID_set_numeric_function> set_numeric{nullptr};

// Guarded by the caller's lock.
LockFunctions functions_in_use{};

extern "C" {

void LockingCallback(int mode, int lock, const char*, int) noexcept {
  void** const all = mutexes.load(std::memory_order_acquire);
  if (all == nullptr) {
    return;
  }
  if ((mode & LibraryApi::CRYPTO_LOCK) != 0) {
    Platform::LockSystemMutex(all[lock]);
  } else {
    Platform::UnlockSystemMutex(all[lock]);
  }
}

void ThreadIdCallback(CRYPTO_THREADID* id) noexcept {
  const auto set = set_numeric.load(std::memory_order_acquire);
  if (set != nullptr) {
    set(id, Platform::CurrentThreadId());
  }
}

}  // extern "C"

void CloseMutexes(void** all, int count, const LockFunctions& functions) noexcept {
  for (int i = 0; i < count; ++i) {
    Platform::CloseSystemMutex(all[i]);
  }
  functions.CRYPTO_free(all);
}

[[noreturn]] void Fail(Platform::ErrorCode code) {
  throw Win32Exception("Could not initialize the curl library", code);
}

}  // namespace

void InitOpenSslLocks(const LockFunctions& functions) {
  if (mutexes.load() != nullptr) {
    Fail(Platform::kNotSupported);
  }
  const int count = functions.CRYPTO_num_locks();
  auto** const all =
      static_cast<void**>(functions.CRYPTO_malloc(count * static_cast<int>(sizeof(void*)), kSource, __LINE__));
  if (all == nullptr) {
    Fail(Platform::kNotEnoughMemory);
  }
  for (int i = 0; i < count; ++i) {
    all[i] = Platform::CreateSystemMutex();
    if (all[i] == nullptr) {
      CloseMutexes(all, i, functions);
      Fail(Platform::kNotEnoughMemory);
    }
  }
  Platform::PinModule();
  functions_in_use = functions;
  set_numeric.store(functions.CRYPTO_THREADID_set_numeric, std::memory_order_release);
  mutexes.store(all, std::memory_order_release);
  functions.CRYPTO_set_locking_callback(&LockingCallback);
  functions.CRYPTO_THREADID_set_callback(&ThreadIdCallback);
}

void DeinitOpenSslLocks() noexcept {
  const LockFunctions functions = functions_in_use;
  functions.CRYPTO_THREADID_set_callback(nullptr);
  functions.CRYPTO_set_locking_callback(nullptr);
  void** const all = mutexes.exchange(nullptr);
  set_numeric.store(nullptr);
  CloseMutexes(all, functions.CRYPTO_num_locks(), functions);
}

}  // namespace Zelto::Utilities
