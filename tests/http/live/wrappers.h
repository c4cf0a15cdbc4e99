/// @file
/// Wrappers over the system's libcurl, and what their requests came to.
#pragma once

#include "zelto/http/curl_wrapper.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace Zelto::Testing {

inline constexpr const wchar_t* kUserAgent = L"Zelto tests/1";

// Codes of libcurl.
inline constexpr std::uint32_t kCouldNotConnect = 7;
inline constexpr std::uint32_t kPartialFile = 18;
inline constexpr std::uint32_t kHttpError = 22;
inline constexpr std::uint32_t kWriteError = 23;
inline constexpr std::uint32_t kTimedOut = 28;
inline constexpr std::uint32_t kGotNothing = 52;
inline constexpr std::uint32_t kReceiveError = 56;
inline constexpr std::uint32_t kPeerNotVerified = 60;
inline constexpr std::uint32_t kBadCaFile = 77;

/// The folder of the system's libcurl and OpenSSL.
std::wstring SystemLibraries();

struct Setup {
  std::wstring libraries = SystemLibraries();
  bool system_proxy = false;
  std::wstring ca_file = {};
  bool fail_on_error = false;
  unsigned connect_timeout_s = 60;
  unsigned timeout_s = 60;
};
Utilities::CurlWrapper NewWrapper(const Setup& setup = {});

/// What a request came to: a status, or the code of a failure.
struct Outcome {
  std::uint32_t status = 0;
  std::uint32_t error = 0;
  std::string text = {};

  bool operator==(const Outcome& other) const { return status == other.status && error == other.error; }
};
inline Outcome Failed(std::uint32_t error) {
  return {0, error};
}
inline Outcome Answered(std::uint32_t status) {
  return {status};
}
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

Outcome Get(Utilities::CurlWrapper& wrapper, const std::wstring& url);
Outcome Post(Utilities::CurlWrapper& wrapper, const std::wstring& url);

}  // namespace Zelto::Testing
