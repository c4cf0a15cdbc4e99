/// @file
/// What a program needs of an HTTP client, to be replaced in its tests.
#pragma once

#include <zelto/export.h>

#include <cstdint>
#include <string>

namespace Zelto::Utilities {

/// The usual content types of a request body. XML is 3 and JSON is 4.
enum class Curl_ContentType : std::uint32_t {
  None = 0,             ///< no content type
  TextPlain = 1,        ///< "text/plain"
  TextHtml = 2,         ///< "text/html"
  ApplicationXml = 3,   ///< "application/xml"
  ApplicationJson = 4,  ///< "application/json"
};

/// One HTTP session: takes what a request consists of, makes the request, and keeps its result. `CurlWrapper` is the
/// library's own. What the operations mean and throw is said there.
///
/// Inject a `std::shared_ptr<ICurlWrapper>`; a test double overrides what its test needs.
class ZELTO_API ICurlWrapper {
 public:
  virtual ~ICurlWrapper() = default;

  virtual void AddHeader(const std::wstring& name, long value) = 0;
  virtual void AddHeader(const std::wstring& name, const std::wstring& value) = 0;
  virtual void SetContentType(std::wstring contentType) = 0;
  virtual void SetContentType(Curl_ContentType contentType) = 0;
  virtual void ClearHeaders() = 0;
  virtual void AddCertificate(const std::string& pem) = 0;
  virtual void ClearCertificates() = 0;
  virtual void DisableHostVerification() = 0;
  virtual void SetCommandBody(const std::wstring& body) = 0;
  virtual void ExecutePostRequest(const std::wstring& url) = 0;
  virtual void ExecuteGetRequest(const std::wstring& url) = 0;
  virtual std::wstring GetHttpResponse() = 0;
  virtual unsigned int GetHttpStatusCode() = 0;
  virtual void ResetSession() = 0;
};

}  // namespace Zelto::Utilities
