/// @file
/// The files that the HTTP client loads. Not installed.
#pragma once

#include <span>

namespace Zelto::Platform {

/// The two files of one line of OpenSSL.
struct OpenSslFiles {
  const char* crypto;
  const char* ssl;
};

/// File names in the order in which they are looked for.
struct HttpLibraryFiles {
  std::span<const char* const> curl;
  std::span<const OpenSslFiles> openssl;
};

HttpLibraryFiles GetHttpLibraryFiles() noexcept;

}  // namespace Zelto::Platform
