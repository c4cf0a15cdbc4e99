#include "zelto/platform/system_mutex.h"

#include "zelto/platform/errors.h"

#include <mutex>
#include <new>

namespace Zelto::Platform {

void* CreateSystemMutex() noexcept {
  auto* const mutex = new (std::nothrow) std::recursive_mutex;
  if (mutex == nullptr) {
    SetLastErrorCode(kNotEnoughMemory);
  }
  return mutex;
}

void LockSystemMutex(void* mutex) noexcept {
  static_cast<std::recursive_mutex*>(mutex)->lock();
}

void UnlockSystemMutex(void* mutex) noexcept {
  static_cast<std::recursive_mutex*>(mutex)->unlock();
}

void CloseSystemMutex(void* mutex) noexcept {
  delete static_cast<std::recursive_mutex*>(mutex);
}

}  // namespace Zelto::Platform
