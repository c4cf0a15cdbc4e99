/// @file
/// The calling process and thread.
#pragma once

#include <zelto/export.h>

#include <cstdint>

namespace Zelto::Platform {

/// The calling process's identifier, as a peer sees it. Windows: `GetCurrentProcessId`. Linux: `getpid`.
ZELTO_API std::uint32_t CurrentProcessId() noexcept;

/// The calling thread's identifier in the system. Windows: `GetCurrentThreadId`. Linux: `gettid`.
ZELTO_API std::uint32_t CurrentThreadId() noexcept;

}  // namespace Zelto::Platform
