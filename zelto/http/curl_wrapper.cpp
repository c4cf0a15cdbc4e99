#include "zelto/http/curl_wrapper.h"

#include "zelto/http/libraries.h"
#include "zelto/http/proxy_rules.h"
#include "zelto/http/secret.h"
#include "zelto/http/text_checks.h"
#include "zelto/http/transfer.h"
#include "zelto/platform/errors.h"
#include "zelto/platform/pipe_signal.h"
#include "zelto/platform/system_proxy.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"

#include <stdexcept>
#include <utility>

namespace Zelto::Utilities {

CurlWrapper::CurlWrapper(const std::wstring& libraryDirectory, bool useSystemProxy, const std::wstring& userAgent,
                         const std::wstring& caFile, bool failOnError, unsigned long long connectTimeout,
                         unsigned long long timeout)
    : user_agent_(userAgent),
      ca_file_(caFile),
      fail_on_error_(failOnError),
      connect_timeout_(connectTimeout),
      timeout_(timeout),
      libraries_(std::make_unique<HttpLibraries>(libraryDirectory)) {
  OpenSession();
  if (useSystemProxy) {
    try {
      Platform::SystemProxyTexts texts = Platform::ReadSystemProxy();
      const WipeAtEnd wipe_http(texts.http);
      const WipeAtEnd wipe_https(texts.https);
      system_proxy_ = std::make_unique<SystemProxyRules>(texts);
    } catch (...) {
      CloseSession();
      throw;
    }
  }
}

CurlWrapper::CurlWrapper(const std::wstring& libraryDirectory, const std::wstring& proxyHost, unsigned int proxyPort,
                         const std::wstring& proxyUser, const std::wstring& proxyPassword,
                         const std::wstring& userAgent, const std::wstring& caFile, bool failOnError,
                         unsigned long long connectTimeout, unsigned long long timeout)
    : CurlWrapper(libraryDirectory, false, userAgent, caFile, failOnError, connectTimeout, timeout) {
  proxy_host_ = proxyHost;
  proxy_port_ = proxyPort;
  proxy_user_ = proxyUser;
  proxy_password_ = proxyPassword;
}

CurlWrapper::~CurlWrapper() {
  CloseSession();
  Wipe(proxy_password_);
  Wipe(command_body_);
}

void CurlWrapper::OpenSession() {
  void* const session = libraries_->Curl().curl_easy_init();
  if (session == nullptr) {
    throw Win32Exception("Could not initialize the curl library", Platform::kNotEnoughMemory);
  }
  if (session_ != nullptr) {
    const Platform::PipeSignalGuard guard;
    libraries_->Curl().curl_easy_cleanup(session_);
  }
  session_ = session;
}

void CurlWrapper::CloseSession() noexcept {
  FreeHeaders();
  const Platform::PipeSignalGuard guard;  // servers are told the end of their connections
  libraries_->Curl().curl_easy_cleanup(session_);
  session_ = nullptr;
}

void CurlWrapper::AddHeader(const std::wstring& name, long value) {
  const std::string digits = std::to_string(value);
  AddHeader(name, std::wstring(digits.begin(), digits.end()));
}

void CurlWrapper::AddHeader(const std::wstring& name, const std::wstring& value) {
  const std::string line = StringUtilities::Utf16ToUtf8(name).append(":").append(StringUtilities::Utf16ToUtf8(value));
  if (HasLineBreak<char>(line)) {
    RefuseLineBreak("A header");
  }
  auto* const list = static_cast<LibraryApi::curl_slist*>(headers_);
  LibraryApi::curl_slist* const extended = libraries_->Curl().curl_slist_append(list, line.c_str());
  if (extended == nullptr) {
    throw Win32Exception("AddHeader (curl_slist_append) failed!", Platform::kNotEnoughMemory);
  }
  headers_ = extended;
}

void CurlWrapper::SetContentType(std::wstring contentType) {
  if (HasLineBreak<wchar_t>(contentType)) {
    RefuseLineBreak("A content type");
  }
  content_type_ = std::move(contentType);
}

void CurlWrapper::SetContentType(Curl_ContentType contentType) {
  switch (contentType) {
    case Curl_ContentType::None:
      content_type_.clear();
      return;
    case Curl_ContentType::TextPlain:
      content_type_ = L"text/plain";
      return;
    case Curl_ContentType::TextHtml:
      content_type_ = L"text/html";
      return;
    case Curl_ContentType::ApplicationXml:
      content_type_ = L"application/xml";
      return;
    case Curl_ContentType::ApplicationJson:
      content_type_ = L"application/json";
      return;
  }
  throw std::runtime_error("unrecognized content type");
}

void CurlWrapper::ClearHeaders() {
  RequireNoTransfer();
  FreeHeaders();
}

void CurlWrapper::FreeHeaders() noexcept {
  libraries_->Curl().curl_slist_free_all(static_cast<LibraryApi::curl_slist*>(std::exchange(headers_, nullptr)));
}

void CurlWrapper::RequireNoTransfer() const {
  if (is_transferring_) {
    throw std::runtime_error("A request is under way");
  }
}

void CurlWrapper::AddCertificate(const std::string& pem) {
  certificates_.push_back(pem);
}

void CurlWrapper::ClearCertificates() {
  certificates_.clear();
}

void CurlWrapper::DisableHostVerification() {
  verify_host_ = false;
}

void CurlWrapper::SetCommandBody(const std::wstring& body) {
  std::wstring next = body;
  Wipe(command_body_);
  command_body_ = std::move(next);
}

void CurlWrapper::ExecutePostRequest(const std::wstring& url) {
  ExecuteRequest(url, L"POST");
}

void CurlWrapper::ExecuteGetRequest(const std::wstring& url) {
  ExecuteRequest(url, L"GET");
}

std::wstring CurlWrapper::GetHttpResponse() {
  return response_;
}

unsigned int CurlWrapper::GetHttpStatusCode() {
  return status_code_;
}

void CurlWrapper::ResetSession() {
  ClearHeaders();
  Wipe(command_body_);
  content_type_.clear();
  response_.clear();
}

void CurlWrapper::SetReceiveDataCallback(ReceiveDataCallback callback, void* user) {
  RequireNoTransfer();
  receive_callback_ = std::move(callback);
  receive_user_ = user;
}

void CurlWrapper::ExecuteRequest(const std::wstring& url, const std::wstring& verb) {
  if (session_ == nullptr) {
    throw Win32Exception("The curl library is not initialized!", Platform::kInvalidHandle);
  }
  RequireNoTransfer();
  // A connection that was verified with other certificates must not be used again, and libcurl does not see that.
  if (session_certificates_ != certificates_) {
    std::vector<std::string> certificates = certificates_;
    if (session_used_) {
      OpenSession();
    }
    session_certificates_.swap(certificates);
  }
  session_used_ = true;
  Transfer transfer(*this);
  transfer.SetAddress(url);
  transfer.SetBehaviour();
  transfer.SetTrust();
  transfer.SetTimeouts();
  transfer.SetProxy();
  transfer.SetHeaders(verb);
  transfer.SetVerb(verb);
  transfer.SetReceiver();
  transfer.Perform();
}

}  // namespace Zelto::Utilities
