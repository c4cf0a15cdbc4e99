#include "zelto/pipes/pipe_authentication.h"

#include "zelto/pipes/accept_peer.h"
#include "zelto/platform/message_pipe.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/threading/failure_report.h"

namespace Zelto::Utilities {

PipePeerIdentity PipePeerIdentity::Of(const SharedHandle& pipe, bool server_side) {
  Platform::PipePeer peer;
  const Platform::ErrorCode code = Platform::GetPipePeer(pipe, server_side, peer);
  if (code != Platform::kSuccess) {
    throw Win32Exception("Can't identify the peer of the named pipe", code);
  }
  return {peer.process_id, peer.user_id};
}

bool AcceptPeer(const PipeAuthenticationCallback& callback, const SharedHandle& pipe, bool server_side) noexcept {
  try {
    return !callback || callback(pipe, server_side);
  } catch (...) {
    ReportCurrentException(L"Exception authenticating the peer of a named pipe");
    return false;
  }
}

}  // namespace Zelto::Utilities
