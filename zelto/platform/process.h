/// @file
/// The calling process.
#pragma once

#include <cstdint>

#include <zelto/export.h>

namespace Zelto::Platform {

/// The calling process's identifier, as a peer sees it. Windows: `GetCurrentProcessId`. Linux: `getpid`.
ZELTO_API std::uint32_t CurrentProcessId() noexcept;

}  // namespace Zelto::Platform
