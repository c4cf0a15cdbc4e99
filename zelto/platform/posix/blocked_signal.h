/// @file
/// Keeps a signal from the calling thread that a call may raise, and that would end the process.
#pragma once

namespace Zelto::Platform {

/// @return false when it was blocked before, and so is the caller's, or cannot be; nothing has changed then
bool BlockSignal(int signal) noexcept;

/// Undoes `BlockSignal` where it returned true; a signal that came meanwhile is gone. `errno` stays as it is.
void UnblockSignal(int signal) noexcept;

}  // namespace Zelto::Platform
