/// @file
/// Real servers on free loopback ports: nginx with HTTP and HTTPS, and tinyproxy. They run for the whole test program,
/// which has no proxies in its environment then.
#pragma once

#include "tests/http/live/loopback_server.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

#include <memory>
#include <string>

namespace Zelto::Testing {

/// Certificates, made anew in each run: authorities "root", "middle" (by root) and "stranger"; servers "server"
/// (localhost and 127.0.0.1, by middle) and "elsewhere" (another host, by middle). Each server sends its chain up to
/// middle. "broken" is half of root, and "nothing" empty.
///
/// Paths of nginx: /status/CODE answers with that status and its number as the text; /uri, /via, /head and /echo
/// return what they were asked for (the address, the proxies, some headers, the body); /private wants user "us\u00E9r"
/// with password "p@w"; anything else is a file of the folder.
class LiveServers {
 public:
  /// The servers, started at the first call, which belongs on the main thread.
  static LiveServers& Get();
  LiveServers();

  std::wstring Http(const std::wstring& path) const;
  /// @param host  localhost, or another name of the loopback address
  std::wstring Https(const std::wstring& path, const std::wstring& host = L"localhost") const;
  /// A file of the server whose certificate names another host.
  std::wstring Elsewhere() const;
  /// The port of the proxy that wants user "agent" with password "pa5sword".
  unsigned int ProxyPort() const { return proxy_port_; }
  /// What the proxy has noted so far.
  std::string ProxyLog() const { return ReadFile(folder_ / L"proxy.log"); }

  std::string Pem(const std::string& name) const { return ReadFile(PemPath(name)); }
  std::wstring PemPath(const std::string& name) const;
  /// Puts a file into the folder that nginx serves.
  void Serve(const std::wstring& name, const std::string& bytes) { WriteFile(root_ / name, bytes); }

 private:
  void ConfigureNginx();
  void ConfigureProxy();

  TempFolder folder_;
  TempFolder root_;
  LoopbackServer echo_;
  unsigned int http_port_ = 0;
  unsigned int https_port_ = 0;
  unsigned int elsewhere_port_ = 0;
  unsigned int proxy_port_ = 0;
  std::unique_ptr<ChildProcess> nginx_;
  std::unique_ptr<ChildProcess> proxy_;
};

}  // namespace Zelto::Testing
