/// @file
/// Mutexes behind plain pointers, for libraries that want their locks from outside. Not installed.
#pragma once

namespace Zelto::Platform {

/// Makes a mutex that nobody holds and that its holder may take again. Windows: `CreateMutexW`, unnamed. Linux: a
/// recursive mutex.
///
/// @return null when the system has none left; the last error tells why
void* CreateSystemMutex() noexcept;

/// Waits for it without a limit. Windows: `WaitForSingleObject`.
void LockSystemMutex(void* mutex) noexcept;

/// Only on the thread that locked it. Windows: `ReleaseMutex`.
void UnlockSystemMutex(void* mutex) noexcept;

/// Ends a mutex that nobody holds. Windows: `CloseHandle`.
void CloseSystemMutex(void* mutex) noexcept;

}  // namespace Zelto::Platform
