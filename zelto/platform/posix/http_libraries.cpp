#include "zelto/platform/http_libraries.h"

namespace Zelto::Platform {

HttpLibraryFiles GetHttpLibraryFiles() noexcept {
  static constexpr const char* kCurl[] = {"libcurl.so.4"};
  static constexpr OpenSslFiles kOpenSsl[] = {
      {"libcrypto.so.3", "libssl.so.3"},
      {"libcrypto.so.1.1", "libssl.so.1.1"},
  };
  return {kCurl, kOpenSsl};
}

}  // namespace Zelto::Platform
