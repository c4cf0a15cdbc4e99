/// @file
/// What we need of libcurl's and OpenSSL's own interfaces, under the names that it has there. Not installed.
///
/// Numbers that go through `...` must have the width that libcurl reads: `long` for options of the kind long, which has
/// 32 bits on Windows and 64 on Linux.
#pragma once

#include <cstddef>

namespace Zelto::Utilities::LibraryApi {

// libcurl

using CURL = void;

struct curl_slist {
  char* data;
  curl_slist* next;
};

enum CURLcode : int {
  CURLE_OK = 0,
  CURLE_NOT_BUILT_IN = 4,
  CURLE_WRITE_ERROR = 23,
  CURLE_OPERATION_TIMEDOUT = 28,
  CURLE_UNKNOWN_OPTION = 48,
};

inline constexpr int kLong = 0;
inline constexpr int kObjectPoint = 10000;
inline constexpr int kFunctionPoint = 20000;

enum CURLoption : int {
  CURLOPT_PORT = kLong + 3,
  CURLOPT_TIMEOUT = kLong + 13,
  CURLOPT_NOPROGRESS = kLong + 43,
  CURLOPT_FAILONERROR = kLong + 45,
  CURLOPT_POST = kLong + 47,
  CURLOPT_FOLLOWLOCATION = kLong + 52,
  CURLOPT_PROXYPORT = kLong + 59,
  CURLOPT_POSTFIELDSIZE = kLong + 60,
  CURLOPT_SSL_VERIFYPEER = kLong + 64,
  CURLOPT_CONNECTTIMEOUT = kLong + 78,
  CURLOPT_HTTPGET = kLong + 80,
  CURLOPT_SSL_VERIFYHOST = kLong + 81,
  CURLOPT_NOSIGNAL = kLong + 99,
  CURLOPT_PROXYAUTH = kLong + 111,
  CURLOPT_SSL_OPTIONS = kLong + 216,
  CURLOPT_CA_CACHE_TIMEOUT = kLong + 321,

  CURLOPT_WRITEDATA = kObjectPoint + 1,
  CURLOPT_URL = kObjectPoint + 2,
  CURLOPT_PROXY = kObjectPoint + 4,
  CURLOPT_PROXYUSERPWD = kObjectPoint + 6,
  CURLOPT_POSTFIELDS = kObjectPoint + 15,
  CURLOPT_USERAGENT = kObjectPoint + 18,
  CURLOPT_HTTPHEADER = kObjectPoint + 23,
  CURLOPT_CAINFO = kObjectPoint + 65,
  CURLOPT_SSLCERTTYPE = kObjectPoint + 86,
  CURLOPT_CAPATH = kObjectPoint + 97,
  CURLOPT_SSL_CTX_DATA = kObjectPoint + 109,
  CURLOPT_NOPROXY = kObjectPoint + 177,

  CURLOPT_WRITEFUNCTION = kFunctionPoint + 11,
  CURLOPT_SSL_CTX_FUNCTION = kFunctionPoint + 108,
};

enum CURLINFO : int {
  CURLINFO_RESPONSE_CODE = 0x200000 + 2,
};

inline constexpr long CURL_GLOBAL_ALL = 3;
inline constexpr long CURLAUTH_ANY = ~(1L << 4);  // every method but one that is a variant of another

// The members that every libcurl has; `age` tells which others follow.
struct curl_version_info_data {
  int age;
  const char* version;
  unsigned int version_num;
  const char* host;
  int features;
  const char* ssl_version;
};
constexpr int CURLVERSION_FIRST = 0;

extern "C" {
using curl_write_callback = std::size_t (*)(char* data, std::size_t size, std::size_t count, void* user);
using curl_ssl_ctx_callback = CURLcode (*)(CURL* curl, void* ssl_ctx, void* user);

using curl_global_init_function = CURLcode (*)(long flags);
using curl_global_cleanup_function = void (*)();
using curl_easy_init_function = CURL* (*)();
using curl_easy_cleanup_function = void (*)(CURL* curl);
using curl_easy_setopt_function = CURLcode (*)(CURL* curl, CURLoption option, ...);
using curl_easy_getinfo_function = CURLcode (*)(CURL* curl, CURLINFO info, ...);
using curl_easy_perform_function = CURLcode (*)(CURL* curl);
using curl_easy_strerror_function = const char* (*)(CURLcode code);
using curl_version_info_function = const curl_version_info_data* (*)(int age);
using curl_slist_append_function = curl_slist* (*)(curl_slist* list, const char* text);
using curl_slist_free_all_function = void (*)(curl_slist* list);

// OpenSSL

struct CRYPTO_THREADID;
struct SSL_CTX;
struct X509;
struct X509_STORE;
struct BIO;

using pem_password_cb = int (*)(char* buffer, int size, int rwflag, void* user);
using locking_callback = void (*)(int mode, int type, const char* file, int line);
using threadid_callback = void (*)(CRYPTO_THREADID* id);

// Of the line before 1.1 only.
using CRYPTO_malloc_function = void* (*)(int size, const char* file, int line);
using CRYPTO_free_function = void (*)(void* memory);
using CRYPTO_num_locks_function = int (*)();
using CRYPTO_set_locking_callback_function = void (*)(locking_callback callback);
using CRYPTO_THREADID_set_callback_function = int (*)(threadid_callback callback);
using CRYPTO_THREADID_set_numeric_function = void (*)(CRYPTO_THREADID* id, unsigned long value);

using SSL_CTX_get_cert_store_function = X509_STORE* (*)(const SSL_CTX* context);
using PEM_read_bio_X509_function = X509* (*)(BIO* bio, X509** certificate, pem_password_cb callback, void* user);
using X509_STORE_add_cert_function = int (*)(X509_STORE* store, X509* certificate);
using X509_free_function = void (*)(X509* certificate);
using BIO_new_mem_buf_function = BIO* (*)(const void* memory, int size);
using BIO_free_function = int (*)(BIO* bio);
}

inline constexpr int CRYPTO_LOCK = 1;

}  // namespace Zelto::Utilities::LibraryApi
