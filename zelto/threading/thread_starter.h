/// @file
/// How threads of this library begin and end. Not installed.
#pragma once

#include <functional>
#include <thread>

namespace Zelto::Utilities {

/// Starts a thread of this library. The caller owns it and must have it joined.
///
/// The first call pins the module, so that an unloading host cannot take the code away from under the thread. What
/// `body` throws is reported to the diagnostics sink and ends the thread.
///
/// @throws std::system_error  the system has no thread to give
std::thread StartThread(std::function<void()> body);

/// Has a thread joined in the background: for an owner that goes away on that very thread. Does nothing for a thread
/// that is not joinable. Lets nothing out.
void JoinLater(std::thread thread) noexcept;

}  // namespace Zelto::Utilities
