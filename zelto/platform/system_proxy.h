/// @file
/// The proxy of the system's settings. Not installed.
#pragma once

#include <string>

namespace Zelto::Platform {

/// The settings as texts, as the system keeps them, in UTF-8.
struct SystemProxyTexts {
  /// How the texts are to be read.
  enum class Syntax {
    UserSetting,  ///< Windows: "host:port" or "http=host:port;https=host:port"; exceptions with "*" and "<local>"
    Environment,  ///< one URL each; exceptions are domains and addresses
  };
  Syntax syntax = Syntax::Environment;
  std::string http;   ///< for http addresses; empty: none
  std::string https;  ///< for https addresses; empty: none
  std::string exceptions;
};

/// Reads the settings. Windows: the user's, by `WinHttpGetIEProxyConfigForCurrentUser` of a winhttp.dll that is loaded
/// for it; both schemes get the same text. Linux: the environment, for which a program that runs with more rights than
/// its user is told nothing (`secure_getenv`); `http_proxy` in lower case only, since a web server hands its programs
/// what a stranger says as `HTTP_PROXY`.
///
/// @return no texts when there is no setting or it cannot be read
SystemProxyTexts ReadSystemProxy();

}  // namespace Zelto::Platform
