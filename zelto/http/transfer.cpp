#include "zelto/http/transfer.h"

#include "zelto/http/ip_address.h"
#include "zelto/http/secret.h"
#include "zelto/http/text_checks.h"
#include "zelto/platform/errors.h"
#include "zelto/platform/pipe_signal.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace Zelto::Utilities {
namespace {

using namespace LibraryApi;  // NOLINT(google-build-using-namespace): names of another interface

constexpr unsigned long long kLongestTimeout =
    std::numeric_limits<std::int32_t>::max() / 1000;  // libcurl's limit, in s
constexpr long kVerifyHostName = 2;

// libcurl decodes escapes in user and password, and takes the first colon for the one between them.
void AppendEscaped(std::string& target, std::string_view text, std::string_view specials) {
  for (const char byte : text) {
    if (specials.find(byte) == std::string_view::npos) {
      target += byte;
    } else {
      target += byte == '%' ? "%25" : "%3A";
    }
  }
}

// Without it, OpenSSL would ask the terminal or the standard input for the password of an encrypted text, and wait.
extern "C" int RefusePassword(char*, int, int, void*) noexcept {
  return -1;
}

}  // namespace

CurlWrapper::Transfer::Transfer(CurlWrapper& session) noexcept : session_(session), curl_(session.libraries_->Curl()) {}

CurlWrapper::Transfer::~Transfer() {
  for (const CURLoption option : {CURLOPT_POSTFIELDS, CURLOPT_HTTPHEADER, CURLOPT_WRITEDATA, CURLOPT_SSL_CTX_DATA,
                                  CURLOPT_SSL_CTX_FUNCTION, CURLOPT_PROXYUSERPWD}) {
    Clear(option);
  }
  if (session_.last_address_ && !session_.last_address_->address.user_info.empty()) {
    Wipe(session_.last_address_->url);
    Wipe(session_.last_address_->text);
    session_.last_address_.reset();
  }
  WipeIfUsed(body_);
}

void CurlWrapper::Transfer::SetAddress(const std::wstring& url) {
  if (!session_.last_address_ || session_.last_address_->url != url) {
    auto fresh = std::make_unique<LastAddress>();
    fresh->address = SplitAddress(url);
    fresh->url = url;
    fresh->text = fresh->address.ToText();
    session_.last_address_ = std::move(fresh);
  }
  Set(CURLOPT_URL, session_.last_address_->text.c_str());
  Set(CURLOPT_PORT, long{session_.last_address_->address.port});
}

void CurlWrapper::Transfer::SetBehaviour() {
  Set(CURLOPT_NOSIGNAL, 1L);
  Set(CURLOPT_NOPROGRESS, 1L);
  Set(CURLOPT_FOLLOWLOCATION, 0L);
  if (session_.fail_on_error_) {
    Set(CURLOPT_FAILONERROR, 1L);
  }
  if (!session_.user_agent_.empty()) {
    SetText(CURLOPT_USERAGENT, "A user agent", StringUtilities::Utf16ToUtf8(session_.user_agent_));
  }
}

void CurlWrapper::Transfer::SetTrust() {
  const bool has_ca_file = !session_.ca_file_.empty();
  const bool is_pinned = !has_ca_file && !session_.certificates_.empty();
  Set(CURLOPT_SSL_VERIFYPEER, 0L);
  if (is_pinned) {
    if (!session_.libraries_->UsesOpenSsl()) {
      throw Win32Exception("Pinned certificates need a libcurl that uses OpenSSL", Platform::kNotSupported);
    }
    Set(CURLOPT_SSLCERTTYPE, "PEM");
    TrustOnlyWhatIsGiven();
    Set(CURLOPT_CAINFO, static_cast<const char*>(nullptr));
    // Else the certificates would be added to a store that libcurl keeps for later requests.
    SetWhereKnown(CURLOPT_CA_CACHE_TIMEOUT, 0L);
    Set(CURLOPT_SSL_CTX_DATA, static_cast<void*>(&session_));
    Set(CURLOPT_SSL_CTX_FUNCTION, &AddPinnedCertificates);
    Set(CURLOPT_SSL_VERIFYPEER, 1L);
  } else {
    Clear(CURLOPT_SSL_CTX_DATA);
    Clear(CURLOPT_SSL_CTX_FUNCTION);
  }
  if (has_ca_file) {
    TrustOnlyWhatIsGiven();
    SetText(CURLOPT_CAINFO, "A CA file's path", StringUtilities::Utf16ToUtf8(session_.ca_file_));
    Set(CURLOPT_SSL_VERIFYPEER, 1L);
  }
  Set(CURLOPT_SSL_VERIFYHOST, session_.verify_host_ ? kVerifyHostName : 0L);
}

// Switches off the folder of trusted certificates that libcurl was built with, and the system's own store.
void CurlWrapper::Transfer::TrustOnlyWhatIsGiven() {
  SetWhereKnown(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  SetWhereKnown(CURLOPT_SSL_OPTIONS, 0L);
}

void CurlWrapper::Transfer::SetTimeouts() {
  Set(CURLOPT_CONNECTTIMEOUT, static_cast<long>(std::min(session_.connect_timeout_, kLongestTimeout)));
  Set(CURLOPT_TIMEOUT, static_cast<long>(std::min(session_.timeout_, kLongestTimeout)));
}

void CurlWrapper::Transfer::SetProxy() {
  Proxy proxy = ChooseProxy();
  session_.uses_tls_ = session_.uses_tls_ || session_.last_address_->address.scheme == "https" ||
                       proxy.host.find("://") != std::string::npos;
  // Empty texts keep libcurl from looking into the environment.
  SetWhereKnown(CURLOPT_NOPROXY, "");
  if (proxy.host.empty()) {
    SetWhereKnown(CURLOPT_PROXY, "");
    return;
  }
  SetText(CURLOPT_PROXY, "A proxy's host", proxy.host);
  Set(CURLOPT_PROXYPORT, static_cast<long>(proxy.port));
  std::string credentials;
  if (!proxy.user.empty()) {
    Set(CURLOPT_PROXYAUTH, CURLAUTH_ANY);
    credentials.reserve((proxy.user.size() + proxy.password.size()) * 3 + 1);
    AppendEscaped(credentials, proxy.user, "%:");
    credentials += ':';
    AppendEscaped(credentials, proxy.password, "%");
  }
  const bool has_line_break = HasLineBreak<char>(credentials);
  const CURLcode result =
      has_line_break ? CURLE_OK : TrySet(CURLOPT_PROXYUSERPWD, credentials.empty() ? nullptr : credentials.c_str());
  WipeIfUsed(credentials);
  if (has_line_break) {
    RefuseLineBreak("A proxy's user or password");
  }
  if (result != CURLE_OK) {
    Fail(result);
  }
}

Proxy CurlWrapper::Transfer::ChooseProxy() const {
  if (session_.system_proxy_) {
    const Proxy* const proxy = session_.system_proxy_->For(session_.last_address_->address);
    return proxy != nullptr ? *proxy : Proxy();
  }
  Proxy proxy;
  if (session_.proxy_host_.empty()) {
    return proxy;
  }
  proxy.host = StringUtilities::Utf16ToUtf8(session_.proxy_host_);
  if (ParseIpv6(proxy.host)) {
    proxy.host.insert(0, 1, '[').append(1, ']');
  }
  proxy.port = session_.proxy_port_;
  proxy.user = StringUtilities::Utf16ToUtf8(session_.proxy_user_);
  proxy.password = StringUtilities::Utf16ToUtf8(session_.proxy_password_);
  return proxy;
}

void CurlWrapper::Transfer::SetHeaders(const std::wstring& verb) {
  // A GET that announced a body and sent none would keep the server waiting, or make it take the next request for it.
  if (verb != L"GET" && !session_.command_body_.empty()) {
    body_ = StringUtilities::Utf16ToUtf8(session_.command_body_);
  }
  if (body_.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    throw Win32Exception("The request body is too long", Platform::kInvalidParameter);
  }
  // Never destroyed: a request may be made while static objects are being destroyed.
  static const std::wstring& kContentLength = *new std::wstring(L"Content-Length");
  session_.AddHeader(kContentLength, static_cast<long>(body_.size()));
  if (!session_.content_type_.empty()) {
    session_.AddHeader(L"Content-Type", session_.content_type_);
  }
  Set(CURLOPT_HTTPHEADER, session_.headers_);
}

void CurlWrapper::Transfer::SetVerb(const std::wstring& verb) {
  if (verb == L"POST") {
    Set(CURLOPT_POST, 1L);
    // Without a pointer, libcurl would read the body from the standard input.
    Set(CURLOPT_POSTFIELDS, body_.c_str());
    Set(CURLOPT_POSTFIELDSIZE, static_cast<long>(body_.size()));
  } else if (verb == L"GET") {
    Set(CURLOPT_HTTPGET, 1L);
  } else {
    throw Win32Exception("Invalid HTTP verb specified.", Platform::kInvalidParameter);
  }
}

void CurlWrapper::Transfer::SetReceiver() {
  if (session_.receive_callback_ && session_.receive_user_ != nullptr) {
    receiver_.callback = &session_.receive_callback_;
    if (const auto* function = session_.receive_callback_.target<decltype(receiver_.function)>()) {
      receiver_.function = *function;
    }
    receiver_.user = session_.receive_user_;
  }
  Set(CURLOPT_WRITEFUNCTION, receiver_.callback != nullptr ? &HandOver : &Collect);
  Set(CURLOPT_WRITEDATA, static_cast<void*>(&receiver_));
}

void CurlWrapper::Transfer::Perform() {
  session_.is_transferring_ = true;
  const CURLcode result = [this] {
    // libcurl writes without the signal; OpenSSL does not, also when a connection of an earlier request is closed.
    std::optional<Platform::PipeSignalGuard> guard;
    if (session_.uses_tls_) {
      guard.emplace();
    }
    return curl_.curl_easy_perform(session_.session_);
  }();
  session_.is_transferring_ = false;
  long status = 0;
  curl_.curl_easy_getinfo(session_.session_, CURLINFO_RESPONSE_CODE, &status);
  if (result == CURLE_OPERATION_TIMEDOUT) {
    // Some versions leave a thread behind that still waits for the name's address, in libcurl's code.
    session_.libraries_->KeepLoaded();
  }
  if (receiver_.failure) {
    std::rethrow_exception(receiver_.failure);
  }
  if (result != CURLE_OK) {
    Fail(result);
  }
  session_.status_code_ = static_cast<std::uint32_t>(status);
  if (receiver_.callback == nullptr) {
    session_.response_.clear();
    session_.response_ = StringUtilities::Utf8ToUtf16(receiver_.body);
  }
}

std::size_t CurlWrapper::Transfer::Collect(char* data, std::size_t size, std::size_t count, void* receiver) noexcept {
  auto& self = *static_cast<Receiver*>(receiver);
  try {
    self.body.append(data, size * count);
    return size * count;
  } catch (...) {
    self.failure = std::current_exception();
    return 0;
  }
}

std::size_t CurlWrapper::Transfer::HandOver(char* data, std::size_t size, std::size_t count, void* receiver) noexcept {
  auto& self = *static_cast<Receiver*>(receiver);
  const std::size_t bytes = size * count;
  try {
    if (bytes == 0) {
      return 0;
    }
    const std::size_t taken = self.function != nullptr ? self.function(data, size, count, self.user)
                                                       : (*self.callback)(data, size, count, self.user);
    // Only all or nothing: some other numbers would make libcurl wait for ever.
    return taken == bytes ? bytes : 0;
  } catch (...) {
    self.failure = std::current_exception();
    return 0;
  }
}

CURLcode CurlWrapper::Transfer::AddPinnedCertificates(void*, void* ssl_context, void* session) noexcept {
  const auto& self = *static_cast<const CurlWrapper*>(session);
  const CertificateFunctions& openssl = self.libraries_->Certificates();
  X509_STORE* const store = openssl.SSL_CTX_get_cert_store(static_cast<const SSL_CTX*>(ssl_context));
  for (const std::string& pem : self.certificates_) {
    BIO* const bio = openssl.BIO_new_mem_buf(pem.c_str(), -1);
    if (bio == nullptr) {
      continue;
    }
    X509* const certificate = openssl.PEM_read_bio_X509(bio, nullptr, &RefusePassword, nullptr);
    if (certificate != nullptr) {
      openssl.X509_STORE_add_cert(store, certificate);
      openssl.X509_free(certificate);
    }
    openssl.BIO_free(bio);
  }
  return CURLE_OK;
}

template <class Value>
CURLcode CurlWrapper::Transfer::TrySet(CURLoption option, Value value) noexcept {
  return curl_.curl_easy_setopt(session_.session_, option, value);
}

template <class Value>
void CurlWrapper::Transfer::Set(CURLoption option, Value value) {
  const CURLcode result = TrySet(option, value);
  if (result != CURLE_OK) {
    Fail(result);
  }
}

// For what older or smaller libcurls do not have, nor need to be told.
template <class Value>
void CurlWrapper::Transfer::SetWhereKnown(CURLoption option, Value value) {
  const CURLcode result = TrySet(option, value);
  if (result != CURLE_OK && result != CURLE_UNKNOWN_OPTION && result != CURLE_NOT_BUILT_IN) {
    Fail(result);
  }
}

void CurlWrapper::Transfer::SetText(CURLoption option, std::string_view what, const std::string& text) {
  if (HasLineBreak<char>(text)) {
    RefuseLineBreak(what);
  }
  Set(option, text.c_str());
}

void CurlWrapper::Transfer::Clear(CURLoption option) noexcept {
  TrySet(option, static_cast<void*>(nullptr));
}

void CurlWrapper::Transfer::Fail(CURLcode code) const {
  throw Win32Exception(curl_.curl_easy_strerror(code), static_cast<std::uint32_t>(code));
}

}  // namespace Zelto::Utilities
