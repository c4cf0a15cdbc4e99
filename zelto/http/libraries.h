/// @file
/// The three libraries of the HTTP client, loaded. Not installed.
#pragma once

#include "zelto/http/library_api.h"
#include "zelto/platform/modules.h"

#include <memory>
#include <string>

namespace Zelto::Utilities {

struct CurlFunctions {
  LibraryApi::curl_global_init_function curl_global_init;
  LibraryApi::curl_easy_init_function curl_easy_init;
  LibraryApi::curl_slist_free_all_function curl_slist_free_all;
  LibraryApi::curl_easy_cleanup_function curl_easy_cleanup;
  LibraryApi::curl_global_cleanup_function curl_global_cleanup;
  LibraryApi::curl_easy_setopt_function curl_easy_setopt;
  LibraryApi::curl_slist_append_function curl_slist_append;
  LibraryApi::curl_easy_getinfo_function curl_easy_getinfo;
  LibraryApi::curl_easy_perform_function curl_easy_perform;
  LibraryApi::curl_easy_strerror_function curl_easy_strerror;
  LibraryApi::curl_version_info_function curl_version_info;  ///< may be null
};

/// All null with an OpenSSL that does its own locking (1.1 and newer).
struct LockFunctions {
  LibraryApi::CRYPTO_malloc_function CRYPTO_malloc;
  LibraryApi::CRYPTO_num_locks_function CRYPTO_num_locks;
  LibraryApi::CRYPTO_set_locking_callback_function CRYPTO_set_locking_callback;
  LibraryApi::CRYPTO_THREADID_set_callback_function CRYPTO_THREADID_set_callback;
  LibraryApi::CRYPTO_free_function CRYPTO_free;
  LibraryApi::CRYPTO_THREADID_set_numeric_function CRYPTO_THREADID_set_numeric;
};

struct CertificateFunctions {
  LibraryApi::SSL_CTX_get_cert_store_function SSL_CTX_get_cert_store;
  LibraryApi::PEM_read_bio_X509_function PEM_read_bio_X509;
  LibraryApi::X509_STORE_add_cert_function X509_STORE_add_cert;
  LibraryApi::X509_free_function X509_free;
  LibraryApi::BIO_new_mem_buf_function BIO_new_mem_buf;
  LibraryApi::BIO_free_function BIO_free;
};

class GlobalUse;

/// libcurl and OpenSSL, loaded and initialised for as long as the object lives. Immutable but for `KeepLoaded`.
class HttpLibraries {
 public:
  /// @param directory  see `CurlWrapper`
  /// @throws Win32Exception  see `CurlWrapper`; what was loaded is let go
  explicit HttpLibraries(const std::wstring& directory);
  ~HttpLibraries();
  HttpLibraries(const HttpLibraries&) = delete;
  HttpLibraries& operator=(const HttpLibraries&) = delete;

  const CurlFunctions& Curl() const noexcept { return curl_; }
  const CertificateFunctions& Certificates() const noexcept { return certificates_; }

  /// Whether libcurl's contexts are OpenSSL's, as far as libcurl tells: those of others must not meet its functions.
  bool UsesOpenSsl() const noexcept;

  /// Leaves the libraries loaded beyond the object's life.
  void KeepLoaded() noexcept { keep_loaded_ = true; }

 private:
  void LoadCurl(const std::string& folder);
  void LoadOpenSsl(const std::string& folder);

  Platform::UniqueModule curl_module_;
  Platform::UniqueModule crypto_module_;
  Platform::UniqueModule ssl_module_;
  CurlFunctions curl_{};
  LockFunctions locks_{};
  CertificateFunctions certificates_{};
  std::unique_ptr<GlobalUse> global_use_;
  bool keep_loaded_ = false;
};

}  // namespace Zelto::Utilities
