/// @file
/// Which proxy leads to an address, by the system's settings. Not installed.
#pragma once

#include "zelto/http/address.h"
#include "zelto/http/secret.h"
#include "zelto/platform/system_proxy.h"

#include <zelto/export.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Zelto::Utilities {

/// A proxy as libcurl takes it, in UTF-8.
struct Proxy {
  std::string host;        ///< with a prefix like "socks5h://" unless it speaks HTTP; an IPv6 address in brackets
  std::uint32_t port = 0;  ///< 0: libcurl's own
  std::string user;        ///< as they are, not percent-encoded
  std::string password;

  ~Proxy() { Wipe(password); }
};

/// The system's settings, read. Immutable.
///
/// A proxy is a host and perhaps a port, behind a scheme ("http", "https", "socks4", "socks4a", "socks5", "socks5h")
/// and user and password, which may all be left out. Without a port it is 80, 443 for "https", 1080 for the others.
///
/// Exceptions in the environment, between commas and blanks: "*" for all; an address or a network
/// ("10.0.0.0/8", "fd00::/8"); else a domain, which stands for itself and all below it, with or without a dot in front.
/// In the user's setting on Windows, between semicolons and blanks: "<local>" for names without a dot; else a pattern
/// with "*", perhaps with a scheme in front. A port may stand behind either.
class SystemProxyRules {
 public:
  /// @throws Win32Exception  "Invalid system proxy" (13): going without one is not what the user has set
  ZELTO_API explicit SystemProxyRules(const Platform::SystemProxyTexts& texts);

  /// @return the proxy for an address; null when there is none, or it is an exception
  ZELTO_API const Proxy* For(const Address& address) const;

 private:
  bool IsException(const Address& address) const;

  std::optional<Proxy> http_;
  std::optional<Proxy> https_;
  std::vector<std::string> exceptions_;  // in lower case
  Platform::SystemProxyTexts::Syntax syntax_;
};

}  // namespace Zelto::Utilities
