#include "zelto/platform/system_mutex.h"

#include <windows.h>

namespace Zelto::Platform {

void* CreateSystemMutex() noexcept {
  return ::CreateMutexW(nullptr, FALSE, nullptr);
}

void LockSystemMutex(void* mutex) noexcept {
  ::WaitForSingleObject(mutex, INFINITE);
}

void UnlockSystemMutex(void* mutex) noexcept {
  ::ReleaseMutex(mutex);
}

void CloseSystemMutex(void* mutex) noexcept {
  ::CloseHandle(mutex);
}

}  // namespace Zelto::Platform
