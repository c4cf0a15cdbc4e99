/// @file
/// Who may be at the other end of a pipe.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/shared_handle.h>

#include <cstdint>
#include <functional>
#include <optional>

namespace Zelto::Utilities {

/// Judges the peer of a new connection: given the pipe and whether this is the server's side of it (then the peer is a
/// client), returns false to refuse the peer. One that throws refuses too, and the diagnostics sink hears of it.
///
/// Runs on the server's observer thread, or on the thread that opens the client; must not block for long.
using PipeAuthenticationCallback = std::function<bool(SharedHandle pipe, bool server_side)>;

/// The process behind a pipe, for an authentication callback:
/// ```
/// server->Start([](SharedHandle pipe, bool server_side) {
///   return IsOurs(PipePeerIdentity::Of(pipe, server_side).process_id);
/// });
/// ```
struct ZELTO_API PipePeerIdentity {
  std::uint32_t process_id = 0;          ///< as it was when the connection was made; the process may be gone by now
  std::optional<std::uint32_t> user_id;  ///< Linux: the peer's effective user then; not given on Windows

  /// Asks the system. Windows: `GetNamedPipeClientProcessId`, `GetNamedPipeServerProcessId`. Linux: `SO_PEERCRED`.
  ///
  /// @param server_side  whether `pipe` is a server's end, as the callback is told
  /// @throws Win32Exception  "Can't identify the peer of the named pipe", with the system's error
  static PipePeerIdentity Of(const SharedHandle& pipe, bool server_side);
};

}  // namespace Zelto::Utilities
