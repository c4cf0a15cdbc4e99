/// @file
/// One request of a session. Not installed.
#pragma once

#include "zelto/http/address.h"
#include "zelto/http/curl_wrapper.h"
#include "zelto/http/libraries.h"
#include "zelto/http/proxy_rules.h"

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// What a request's address came to, kept since the next request often has the same.
struct CurlWrapper::LastAddress {
  std::wstring url;
  Address address;
  std::string text;  // for libcurl
};

/// Sets the session's options for one request, makes it, and takes everything back at the end that belongs to the
/// request alone, however it ends. Lives on one thread's stack.
///
/// An option that some request sets is set, or set back, by every request.
class CurlWrapper::Transfer {
 public:
  explicit Transfer(CurlWrapper& session) noexcept;
  ~Transfer();
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  // The steps, in this order. All throw as `ExecuteRequest` does.
  void SetAddress(const std::wstring& url);
  void SetBehaviour();
  void SetTrust();
  void SetTimeouts();
  void SetProxy();
  void SetHeaders(const std::wstring& verb);
  void SetVerb(const std::wstring& verb);
  void SetReceiver();
  /// Makes the request and stores status and response.
  void Perform();

 private:
  // What arrives of the response's body.
  struct Receiver {
    std::string body;
    const ReceiveDataCallback* callback = nullptr;
    // What the callback calls if it is a plain function, which spares the way through `std::function` for each piece.
    std::size_t (*function)(char* data, std::size_t size, std::size_t count, void* user) = nullptr;
    void* user = nullptr;
    std::exception_ptr failure;
  };

  static std::size_t Collect(char* data, std::size_t size, std::size_t count, void* receiver) noexcept;
  static std::size_t HandOver(char* data, std::size_t size, std::size_t count, void* receiver) noexcept;
  static LibraryApi::CURLcode AddPinnedCertificates(void* curl, void* ssl_context, void* session) noexcept;

  template <class Value>
  LibraryApi::CURLcode TrySet(LibraryApi::CURLoption option, Value value) noexcept;
  template <class Value>
  void Set(LibraryApi::CURLoption option, Value value);
  template <class Value>
  void SetWhereKnown(LibraryApi::CURLoption option, Value value);
  void SetText(LibraryApi::CURLoption option, std::string_view what, const std::string& text);
  void Clear(LibraryApi::CURLoption option) noexcept;
  void TrustOnlyWhatIsGiven();
  Proxy ChooseProxy() const;
  [[noreturn]] void Fail(LibraryApi::CURLcode code) const;

  CurlWrapper& session_;
  const CurlFunctions& curl_;
  std::string body_;
  Receiver receiver_;
};

}  // namespace Zelto::Utilities
