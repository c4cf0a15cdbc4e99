/// @file
/// Wrappers over the system's libcurl, and what their requests came to.
#pragma once

#include "zelto/http/curl_wrapper.h"

#include <string>

namespace Zelto::Testing {

// What comes of a request: the status, or a code of libcurl's.
inline const std::string kAccepted = "200";
inline const std::string kCouldNotConnect = "error 7";
inline const std::string kHttpError = "error 22";
inline const std::string kTimedOut = "error 28";
inline const std::string kReceiveError = "error 56";
inline const std::string kPeerNotVerified = "error 60";
inline const std::string kBadCaFile = "error 77";

/// The folder of the system's libcurl and OpenSSL.
inline constexpr const wchar_t* kSystemLibraries = ZELTO_SYSTEM_LIBRARIES;

struct Setup {
  std::wstring libraries = kSystemLibraries;
  std::wstring ca_file = {};
  bool fail_on_error = false;
  unsigned connect_timeout_s = 60;
  unsigned timeout_s = 60;
};
Utilities::CurlWrapper NewWrapper(const Setup& setup = {});

/// Make a request without headers of an earlier one, and tell what came of it.
std::string Get(Utilities::CurlWrapper& wrapper, const std::wstring& url);
std::string Post(Utilities::CurlWrapper& wrapper, const std::wstring& url);

}  // namespace Zelto::Testing
