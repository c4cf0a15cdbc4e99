#include "zelto/platform/http_libraries.h"

namespace Zelto::Platform {

HttpLibraryFiles GetHttpLibraryFiles() noexcept {
  static constexpr const char* kCurl[] = {"libcurl.dll", "libcurl-x64.dll"};
  static constexpr OpenSslFiles kOpenSsl[] = {
      {"libeay32.dll", "ssleay32.dll"},
      {"libcrypto-3-x64.dll", "libssl-3-x64.dll"},
      {"libcrypto-1_1-x64.dll", "libssl-1_1-x64.dll"},
  };
  return {kCurl, kOpenSsl};
}

}  // namespace Zelto::Platform
