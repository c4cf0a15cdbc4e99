/// @file
/// Addresses of requests, taken apart. Not installed.
#pragma once

#include "zelto/http/secret.h"

#include <zelto/export.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// The parts of an address as a request needs them: ASCII, with everything percent-encoded that must be.
struct Address {
  std::string scheme;      ///< "http" or "https"
  std::string user_info;   ///< "user" or "user:password"; empty: none
  std::string host;        ///< a name, an IPv4 address, or an IPv6 address in brackets
  std::uint16_t port = 0;  ///< the one that was given, else 80 or 443; never 0
  std::string path;        ///< begins with a slash and has the query in it

  ~Address() { Wipe(user_info); }

  /// The whole address; the port stands in it when it is not the scheme's own.
  ZELTO_API std::string ToText() const;
};

/// Takes an address apart. Linear in the text.
///
/// - Scheme: "http" or "https" in either case, and "://".
/// - User and password up to an "@", which may not stand there twice.
/// - Host: letters, digits, ".", "-", "_", "~", or text that is not ASCII; an IPv6 address in brackets, perhaps with a
///   zone ("%eth0" or "%25eth0"). A backslash there is refused: others read it as a slash, and then as another host.
/// - Port: 1 to 65535; none behind a colon is the scheme's own.
/// - Path and query; an empty path is "/". Escapes stay as they are; characters that may not stand there are escaped,
///   as is a "%" that begins no escape. A fragment is dropped.
///
/// @throws Win32Exception  "Invalid URL: " and what is wrong, with 12005, also for control characters anywhere and
///                         for a lone surrogate; "Unsupported URL scheme" with 12006
ZELTO_API Address SplitAddress(std::wstring_view url);

/// The same for text in UTF-8; what is not UTF-8 is escaped byte by byte.
ZELTO_API Address SplitAddress(std::string_view url);

}  // namespace Zelto::Utilities
