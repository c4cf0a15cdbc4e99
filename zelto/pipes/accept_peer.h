/// @file
/// The one place that asks an authentication callback. Not installed.
#pragma once

#include <zelto/pipes/pipe_authentication.h>

namespace Zelto::Utilities {

/// True when there is no callback, otherwise its answer; false when it throws, which is reported.
bool AcceptPeer(const PipeAuthenticationCallback& callback, const SharedHandle& pipe, bool server_side) noexcept;

}  // namespace Zelto::Utilities
