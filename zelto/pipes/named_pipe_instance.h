/// @file
/// The server's end of one connection.
#pragma once

#include <zelto/platform/message_pipe.h>
#include <zelto/platform/shared_handle.h>

namespace Zelto::Utilities {

/// One server-side pipe instance, shared by the server that made it and the connection that serves it. Copies share the
/// two handles and have a record of their own. One operation at a time may use the record.
struct NamedPipeInstance {
  SharedHandle pipe;
  SharedHandle event;                     ///< completion event, manual-reset; made by the first operation on Windows
  Platform::OverlappedRecord overlapped;  ///< of the operation under way
};

}  // namespace Zelto::Utilities
