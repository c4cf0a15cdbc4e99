/// @file
/// The calling process.
#pragma once

#include <zelto/export.h>

#include <cstdint>

namespace Zelto::Platform {

/// The calling process's identifier, as a peer sees it. Windows: `GetCurrentProcessId`. Linux: `getpid`.
ZELTO_API std::uint32_t CurrentProcessId() noexcept;

}  // namespace Zelto::Platform
