#include "zelto/http/libraries.h"

#include "zelto/http/global_use.h"
#include "zelto/platform/errors.h"
#include "zelto/platform/files.h"
#include "zelto/platform/http_libraries.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"

#include <filesystem>
#include <initializer_list>
#include <string_view>

namespace Zelto::Utilities {
namespace {

// The folder with a separator at its end.
std::string FolderPrefix(const std::wstring& directory) {
  std::string folder = directory.empty() ? Platform::ModuleFolder() : StringUtilities::Utf16ToUtf8(directory);
  if (directory.empty() || !Platform::IsPathSeparator(directory.back())) {
    folder += static_cast<char>(std::filesystem::path::preferred_separator);
  }
  return folder;
}

[[noreturn]] void ThrowNotLoaded(const std::string& path, Platform::ErrorCode error) {
  throw Win32Exception("Can't load library: " + path, error);
}

Platform::UniqueModule TryLoad(const std::string& path, Platform::ErrorCode& error) {
  if (path.find('\0') != std::string::npos) {
    ThrowNotLoaded(path, Platform::kInvalidName);  // it must not name what its beginning names
  }
  Platform::UniqueModule module = Platform::LoadModule(path, error);
  if (!module && error != Platform::kModuleNotFound) {
    ThrowNotLoaded(path, error);  // one that is there and broken is not passed over
  }
  return module;
}

// Finds a function in the first of the modules that has it.
template <class Function>
void Resolve(Function& function, std::string_view name, std::initializer_list<void*> modules) {
  for (void* module : modules) {
    function = reinterpret_cast<Function>(Platform::FindFunction(module, name.data()));
    if (function != nullptr) {
      return;
    }
  }
  throw Win32Exception(std::string("Can't load function: ").append(name), Platform::kProcedureNotFound);
}

}  // namespace

HttpLibraries::HttpLibraries(const std::wstring& directory) {
  const std::string folder = FolderPrefix(directory);
  LoadCurl(folder);
  LoadOpenSsl(folder);
  global_use_ = std::make_unique<GlobalUse>(curl_, locks_);
}

HttpLibraries::~HttpLibraries() {
  global_use_.reset();
  if (keep_loaded_) {
    // The references stay behind on purpose.
    static_cast<void>(curl_module_.release());
    static_cast<void>(crypto_module_.release());
    static_cast<void>(ssl_module_.release());
  }
}

bool HttpLibraries::UsesOpenSsl() const noexcept {
  return global_use_->UsesOpenSsl();
}

void HttpLibraries::LoadCurl(const std::string& folder) {
  const auto names = Platform::GetHttpLibraryFiles().curl;
  Platform::ErrorCode error = Platform::kSuccess;
  for (std::size_t i = 0; i < names.size() && !curl_module_; ++i) {
    curl_module_ = TryLoad(folder + names[i], error);
  }
  if (!curl_module_) {
    ThrowNotLoaded(folder + names[0], error);
  }
  void* const module = curl_module_.get();
  Resolve(curl_.curl_global_init, "curl_global_init", {module});
  Resolve(curl_.curl_easy_init, "curl_easy_init", {module});
  Resolve(curl_.curl_slist_free_all, "curl_slist_free_all", {module});
  Resolve(curl_.curl_easy_cleanup, "curl_easy_cleanup", {module});
  Resolve(curl_.curl_global_cleanup, "curl_global_cleanup", {module});
  Resolve(curl_.curl_easy_setopt, "curl_easy_setopt", {module});
  Resolve(curl_.curl_slist_append, "curl_slist_append", {module});
  Resolve(curl_.curl_easy_getinfo, "curl_easy_getinfo", {module});
  Resolve(curl_.curl_easy_perform, "curl_easy_perform", {module});
  Resolve(curl_.curl_easy_strerror, "curl_easy_strerror", {module});
  curl_.curl_version_info =
      reinterpret_cast<LibraryApi::curl_version_info_function>(Platform::FindFunction(module, "curl_version_info"));
}

void HttpLibraries::LoadOpenSsl(const std::string& folder) {
  const auto lines = Platform::GetHttpLibraryFiles().openssl;
  Platform::ErrorCode error = Platform::kSuccess;
  std::size_t line = 0;
  for (std::size_t i = 0; i < lines.size() && !crypto_module_; ++i) {
    crypto_module_ = TryLoad(folder + lines[i].crypto, error);
    line = i;
  }
  if (!crypto_module_) {
    ThrowNotLoaded(folder + lines[0].crypto, error);
  }
  void* const crypto = crypto_module_.get();
  if (Platform::FindFunction(crypto, "OpenSSL_version_num") == nullptr) {
    Resolve(locks_.CRYPTO_malloc, "CRYPTO_malloc", {crypto});
    Resolve(locks_.CRYPTO_num_locks, "CRYPTO_num_locks", {crypto});
    Resolve(locks_.CRYPTO_set_locking_callback, "CRYPTO_set_locking_callback", {crypto});
    Resolve(locks_.CRYPTO_THREADID_set_callback, "CRYPTO_THREADID_set_callback", {crypto});
    Resolve(locks_.CRYPTO_free, "CRYPTO_free", {crypto});
    Resolve(locks_.CRYPTO_THREADID_set_numeric, "CRYPTO_THREADID_set_numeric", {crypto});
  }

  // Never a file of another line: two OpenSSLs would meet in one context.
  ssl_module_ = TryLoad(folder + lines[line].ssl, error);
  if (!ssl_module_) {
    ThrowNotLoaded(folder + lines[line].ssl, error);
  }
  // What libcurl itself is linked with comes first, where the system tells: its contexts must meet no other OpenSSL's
  // certificates. The second library has most of these functions only where the system looks into what it is linked
  // with; on Windows they are in the first.
  void* const curl = curl_module_.get();
  void* const ssl = ssl_module_.get();
  Resolve(certificates_.SSL_CTX_get_cert_store, "SSL_CTX_get_cert_store", {curl, ssl, crypto});
  Resolve(certificates_.PEM_read_bio_X509, "PEM_read_bio_X509", {curl, ssl, crypto});
  Resolve(certificates_.X509_STORE_add_cert, "X509_STORE_add_cert", {curl, ssl, crypto});
  Resolve(certificates_.X509_free, "X509_free", {curl, ssl, crypto});
  Resolve(certificates_.BIO_new_mem_buf, "BIO_new_mem_buf", {curl, ssl, crypto});
  Resolve(certificates_.BIO_free, "BIO_free", {curl, ssl, crypto});
}

}  // namespace Zelto::Utilities
