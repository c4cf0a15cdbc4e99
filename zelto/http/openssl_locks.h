/// @file
/// Locks for an OpenSSL that has none of its own. Not installed.
#pragma once

#include "zelto/http/libraries.h"

namespace Zelto::Utilities {

/// Gives an OpenSSL its locks and the callbacks that use them, and pins this library, as such an OpenSSL never forgets
/// the thread-id callback. Both functions are called under the caller's lock, for one OpenSSL at a time.
///
/// @throws Win32Exception  "Could not initialize the curl library": without memory or mutexes (8), or while another
///                         OpenSSL has the locks (50); then nothing has changed
void InitOpenSslLocks(const LockFunctions& functions);

/// Takes callbacks and locks back. Nobody may use that OpenSSL meanwhile.
void DeinitOpenSslLocks() noexcept;

}  // namespace Zelto::Utilities
