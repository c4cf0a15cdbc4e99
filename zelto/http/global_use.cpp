#include "zelto/http/global_use.h"

#include "zelto/http/openssl_locks.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string_view>
#include <vector>

namespace Zelto::Utilities {
namespace {

// One libcurl in the process. Usually there is one; sessions with other directories may bring others.
struct InitialisedCurl {
  LibraryApi::curl_global_init_function identity;
  std::size_t uses;
  bool has_locks;
  bool uses_openssl;
};

struct ProcessState {
  std::mutex lock;
  std::vector<InitialisedCurl> libraries;
};

// Never destroyed: sessions may die while static objects are being destroyed.
ProcessState& GetProcessState() {
  static ProcessState& state = *new ProcessState;
  return state;
}

auto FindLibrary(std::vector<InitialisedCurl>& libraries, const CurlFunctions& curl) {
  return std::find_if(libraries.begin(), libraries.end(),
                      [&](const InitialisedCurl& each) { return each.identity == curl.curl_global_init; });
}

// By the names of the libraries that libcurl was built with; one in parentheses is there and not in use. Called under
// the state's lock, for libcurl writes these names anew each time. (The whole list of `curl_version` would wake parts
// of libcurl that leave memory behind when they are unloaded.)
bool UsesOpenSsl(const CurlFunctions& curl) noexcept {
  if (curl.curl_version_info == nullptr) {
    return true;
  }
  const LibraryApi::curl_version_info_data* const info = curl.curl_version_info(LibraryApi::CURLVERSION_FIRST);
  if (info == nullptr || info->ssl_version == nullptr) {
    return false;
  }
  const std::string_view names = info->ssl_version;
  return names.starts_with("OpenSSL/") || names.find(" OpenSSL/") != std::string_view::npos ||
         names.starts_with("quictls/") || names.find(" quictls/") != std::string_view::npos;
}

}  // namespace

GlobalUse::GlobalUse(const CurlFunctions& curl, const LockFunctions& locks) : curl_(curl) {
  ProcessState& state = GetProcessState();
  const std::lock_guard lock(state.lock);
  const auto found = FindLibrary(state.libraries, curl);
  if (found != state.libraries.end()) {
    ++found->uses;
    uses_openssl_ = found->uses_openssl;
    return;
  }
  const bool has_locks = locks.CRYPTO_num_locks != nullptr;
  state.libraries.reserve(state.libraries.size() + 1);
  const LibraryApi::CURLcode result = curl.curl_global_init(LibraryApi::CURL_GLOBAL_ALL);
  if (result != LibraryApi::CURLE_OK) {
    throw Win32Exception("Could not initialize the curl library", static_cast<std::uint32_t>(result));
  }
  if (has_locks) {
    try {
      InitOpenSslLocks(locks);
    } catch (...) {
      curl.curl_global_cleanup();
      throw;
    }
  }
  uses_openssl_ = Utilities::UsesOpenSsl(curl);
  state.libraries.push_back({curl.curl_global_init, 1, has_locks, uses_openssl_});
}

GlobalUse::~GlobalUse() {
  ProcessState& state = GetProcessState();
  const std::lock_guard lock(state.lock);
  const auto found = FindLibrary(state.libraries, curl_);
  if (--found->uses != 0) {
    return;
  }
  if (found->has_locks) {
    DeinitOpenSslLocks();
  }
  state.libraries.erase(found);
  curl_.curl_global_cleanup();
}

}  // namespace Zelto::Utilities
