/// @file
/// The process-wide state of the HTTP client's libraries. Not installed.
#pragma once

#include "zelto/http/libraries.h"

namespace Zelto::Utilities {

/// Keeps the process-wide state of loaded libraries up: it comes with the first object for a libcurl, goes with the
/// last one and comes back with the next. Objects are made and destroyed on any thread.
///
/// The state is `curl_global_init` and, with an OpenSSL that does no locking of its own, its locks.
class GlobalUse {
 public:
  /// @throws Win32Exception  "Could not initialize the curl library"; then nothing stays initialised
  GlobalUse(const CurlFunctions& curl, const LockFunctions& locks);
  ~GlobalUse();
  GlobalUse(const GlobalUse&) = delete;
  GlobalUse& operator=(const GlobalUse&) = delete;

  /// See `HttpLibraries`.
  bool UsesOpenSsl() const noexcept { return uses_openssl_; }

 private:
  const CurlFunctions& curl_;
  bool uses_openssl_;
};

}  // namespace Zelto::Utilities
