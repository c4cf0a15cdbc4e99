/// @file
/// HTTP and HTTPS requests through a libcurl that is loaded at run time.
#pragma once

#include <zelto/export.h>
#include <zelto/http/icurl_wrapper.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Zelto::Utilities {

class HttpLibraries;
class SystemProxyRules;

/// One HTTP session over libcurl: GET or POST, one at a time, with optional proxy, headers, body, pinned certificates
/// and time-outs.
///
/// libcurl and OpenSSL are not linked. The constructor loads them by file name from a directory that the caller gives:
/// - Windows: `libcurl.dll` (else `libcurl-x64.dll`); `libeay32.dll` and `ssleay32.dll`, else `libcrypto-3-x64.dll` and
///   `libssl-3-x64.dll`, else `libcrypto-1_1-x64.dll` and `libssl-1_1-x64.dll`
/// - Linux: `libcurl.so.4`; `libcrypto.so.3` and `libssl.so.3`, else `libcrypto.so.1.1` and `libssl.so.1.1`
///
/// They must be files that belong together: libcurl must use this very OpenSSL. On Windows the directory goes to
/// `LoadLibraryEx` in UTF-8 as narrow text and so must be representable in the system's code page.
///
/// **Requests.** An address is `http` or `https`, a host (an IPv6 one in brackets), and optionally user and password,
/// port, path and query. A fragment is not sent; text that is not ASCII goes as percent-encoded UTF-8. Redirects are
/// never followed. Every option is set anew for every request: what one request used is never left to the next. Open
/// connections are kept and used again, but never beyond a change of the pinned certificates.
///
/// **Trust.** With a CA file, a server's certificate must lead to a certificate of that file. Else, with pinned
/// certificates, to one of those. The certificates that libcurl or the system trusts by default do not count in either
/// case. With neither, servers are not verified at all.
///
/// **Failures** are `Win32Exception`s. That of a failed transfer has libcurl's text for it and libcurl's code, a
/// `CURLcode`, in place of a Win32 code; so has that of an option that libcurl refuses. What the operations throw
/// besides is said there. Text for libcurl that holds CR, LF or U+0000 is refused with code 87: a header, a content
/// type, a user agent, a CA file's path, a proxy's host, user and password; an address with 12005. Text with a lone
/// surrogate is `std::range_error` "bad conversion", in an address 12005, too.
///
/// **Threads.** An object serves one thread at a time. Several objects work on several threads, and may be made and
/// destroyed while others transfer. Within its own receive callback an object takes no request, gives up no headers and
/// takes no other callback: `std::runtime_error` "A request is under way"; and it must not be destroyed there. On Linux
/// a thread has SIGPIPE blocked while libcurl works with TLS on it, also in the callback: no server can end the process
/// by it.
///
/// Example:
///
///     CurlWrapper session(L"C:\\Program Files\\Agent", true, L"agent/1.0", L"", false, 10, 60);
///     session.AddCertificate(pem);
///     session.SetContentType(Curl_ContentType::ApplicationJson);
///     session.SetCommandBody(L"{\"event\":\"start\"}");
///     session.ExecutePostRequest(L"https://events.example.com/track");
///     if (session.GetHttpStatusCode() == 200) { ... session.GetHttpResponse() ... }
///     session.ResetSession();
class ZELTO_API CurlWrapper : public ICurlWrapper {
 public:
  /// Takes a piece of a response's body as it came: bytes, the size of an element (1), the number of elements, and the
  /// caller's own pointer. Returns how many bytes it took; any other number than those given ends the transfer with
  /// libcurl's code 23 (`CURLE_WRITE_ERROR`). Called on the thread that executes the request, never with an empty
  /// piece.
  using ReceiveDataCallback = std::function<std::size_t(char* data, std::size_t size, std::size_t count, void* user)>;

  /// Loads the libraries and opens a session.
  ///
  /// @param libraryDirectory  where the libraries are, with or without a separator at its end; a relative one counts
  ///                          from the current folder; empty: where the file that holds this code is (zelto.dll or
  ///                          libzelto.so; in a static build the program)
  /// @param useSystemProxy    take the proxy of the system's settings, as they are now. Windows: the user's own setting
  ///                          with its exceptions, by `WinHttpGetIEProxyConfigForCurrentUser`; a configuration script
  ///                          is not run. Linux: `http_proxy`, `https_proxy` (or `HTTPS_PROXY`), else `all_proxy` (or
  ///                          `ALL_PROXY`), with the exceptions in `no_proxy` (or `NO_PROXY`). When false there is no
  ///                          proxy, whatever the environment says.
  /// @param userAgent         "User-Agent" of every request; empty: none
  /// @param caFile            path of a file with PEM certificates of trusted authorities; empty: none
  /// @param failOnError       whether a status of 400 and above is a failed transfer (code 22)
  /// @param connectTimeout    seconds until the connection must stand; 0: libcurl's own limit, 300
  /// @param timeout           seconds until the request must be done; 0: none. Both are cut to 2,147,483, the most that
  ///                          libcurl takes.
  ///
  /// @throws Win32Exception  "Can't load library: " and the path of the first file that was looked for, with the
  ///                         system's code (126 when it is not there); "Can't load function: " and its name (127);
  ///                         "Could not initialize the curl library"; "Invalid system proxy" (13)
  CurlWrapper(const std::wstring& libraryDirectory, bool useSystemProxy, const std::wstring& userAgent,
              const std::wstring& caFile, bool failOnError, unsigned long long connectTimeout,
              unsigned long long timeout);

  /// The same with a proxy of the caller's and without the system's. It is used for every address.
  ///
  /// @param proxyHost      a name or an address, also an IPv6 one; libcurl's own prefixes ("socks5h://") may stand in
  ///                       front; empty: no proxy
  /// @param proxyPort      0: libcurl's own, 1080
  /// @param proxyUser      empty: no user and no password
  /// @param proxyPassword  sent by any method the proxy asks for (`CURLAUTH_ANY`)
  CurlWrapper(const std::wstring& libraryDirectory, const std::wstring& proxyHost, unsigned int proxyPort,
              const std::wstring& proxyUser, const std::wstring& proxyPassword, const std::wstring& userAgent,
              const std::wstring& caFile, bool failOnError, unsigned long long connectTimeout,
              unsigned long long timeout);

  CurlWrapper(const CurlWrapper&) = delete;
  CurlWrapper& operator=(const CurlWrapper&) = delete;

  /// Ends the session and lets the libraries go.
  ~CurlWrapper() override;

  /// Adds a header with a number in decimal, by the other form.
  void AddHeader(const std::wstring& name, long value) override;

  /// Adds the line name + ":" + value, without a blank between, to the headers of the next and all later requests.
  ///
  /// Headers accumulate until `ClearHeaders` or `ResetSession`, and executing a request adds "Content-Length" and
  /// "Content-Type" too: clear them between requests, most servers refuse two lines of "Content-Length". By libcurl's
  /// rules a header of its own with an empty value is left out of the request.
  ///
  /// @throws Win32Exception  "AddHeader (curl_slist_append) failed!" when libcurl has no memory
  void AddHeader(const std::wstring& name, const std::wstring& value) override;

  /// Sets the content type of later requests; an empty one stands for none.
  void SetContentType(std::wstring contentType) override;

  /// The same by its number. @throws std::runtime_error  "unrecognized content type" on a number that is none of the
  /// five
  void SetContentType(Curl_ContentType contentType) override;

  /// Drops all headers.
  void ClearHeaders() override;

  /// Pins a certificate: the first one in a PEM text. It may be the server's own (with libcurl 7.68 or newer) or an
  /// authority's. A text that cannot be read is passed over silently; when none can be read, no server is trusted.
  /// A libcurl that says to use another library than OpenSSL makes requests fail then: "Pinned certificates need a
  /// libcurl that uses OpenSSL" (50).
  void AddCertificate(const std::string& pem) override;

  /// Drops all pinned certificates; without a CA file, servers are not verified then.
  void ClearCertificates() override;

  /// From now on a server's certificate may be for another host. There is no way back.
  void DisableHostVerification() override;

  /// Sets the body of later POSTs, sent as UTF-8; at most 2,147,483,647 bytes.
  void SetCommandBody(const std::wstring& body) override;

  /// Posts the body, perhaps an empty one, to an address and waits for the response.
  ///
  /// When it returns, the response is there whole: see `GetHttpStatusCode` and `GetHttpResponse`. When the transfer
  /// fails, both stay as they were.
  ///
  /// @throws Win32Exception    "Invalid URL: " and what is wrong (12005), "Unsupported URL scheme" (12006), before
  ///                           anything is sent; libcurl's text and code for a failed transfer
  /// @throws std::range_error  "bad conversion" when the response is not UTF-8; the status is stored then, and the
  ///                           response is empty
  /// @throws                   what the receive callback threw; the transfer has ended then
  void ExecutePostRequest(const std::wstring& url) override;

  /// Gets an address and waits for the response. Sends no body, whatever `SetCommandBody` was given. Throws as
  /// `ExecutePostRequest`.
  void ExecuteGetRequest(const std::wstring& url) override;

  /// The body of the last response, decoded from UTF-8 up to its first zero byte. A request whose body went to a
  /// receive callback leaves it as it was.
  std::wstring GetHttpResponse() override;

  /// The status of the last response; 0 before the first.
  unsigned int GetHttpStatusCode() override;

  /// Drops all headers, the body, the content type and the response. Status, pinned certificates, proxy, time-outs and
  /// the receive callback stay.
  void ResetSession() override;

  /// Sends the bodies of later responses to a callback instead of `GetHttpResponse`, if both the callback and the
  /// pointer are set; else they are collected again. What the callback throws ends the transfer and is thrown to the
  /// caller of the request.
  ///
  /// @param user  handed to the callback; must not be null for the callback to be used
  void SetReceiveDataCallback(ReceiveDataCallback callback, void* user);

 protected:
  /// Makes a request.
  ///
  /// @param verb  L"GET" or L"POST"
  /// @throws Win32Exception  as `ExecutePostRequest`; "Invalid HTTP verb specified." (87) on another verb, before
  ///                         anything is sent; "The curl library is not initialized!" (6) without a session
  void ExecuteRequest(const std::wstring& url, const std::wstring& verb);

 private:
  class Transfer;
  struct LastAddress;

  void OpenSession();
  void CloseSession() noexcept;
  void FreeHeaders() noexcept;
  void RequireNoTransfer() const;

  void* session_ = nullptr;  // CURL
  void* headers_ = nullptr;  // curl_slist
  std::wstring command_body_;
  std::wstring proxy_host_;
  std::uint32_t proxy_port_ = 0;
  std::wstring proxy_user_;
  std::wstring proxy_password_;
  std::wstring user_agent_;
  std::wstring ca_file_;
  bool fail_on_error_;
  bool verify_host_ = true;
  unsigned long long connect_timeout_;
  unsigned long long timeout_;
  std::uint32_t status_code_ = 0;
  std::wstring response_;
  std::wstring content_type_;
  std::vector<std::string> certificates_;
  std::unique_ptr<HttpLibraries> libraries_;
  ReceiveDataCallback receive_callback_;
  void* receive_user_ = nullptr;
  std::unique_ptr<SystemProxyRules> system_proxy_;
  std::unique_ptr<LastAddress> last_address_;      // null when it held user and password
  std::vector<std::string> session_certificates_;  // those that the session's open connections were verified with
  bool session_used_ = false;
  bool uses_tls_ = false;         // now, or in an earlier request
  bool is_transferring_ = false;  // libcurl is at work, with pointers to what is here
};

}  // namespace Zelto::Utilities
