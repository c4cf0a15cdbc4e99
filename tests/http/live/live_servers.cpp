#include "tests/http/live/live_servers.h"

#include "tests/http/live/certificates.h"
#include "tests/support/counter.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace Zelto::Testing {

namespace {

std::unique_ptr<LiveServers> servers;

/// Ends the servers with the tests.
struct Cleanup : testing::Environment {
  void TearDown() override { servers.reset(); }
};
const auto* const cleanup = testing::AddGlobalTestEnvironment(new Cleanup);

/// Sends the body back, a byte at a time as long as that is quick.
void Echo(Connection& connection) {
  for (std::string request; !(request = connection.ReadRequest()).empty();) {
    const std::string body = request.substr(request.find("\r\n\r\n") + 4);
    connection.Write("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n");
    const std::size_t slow = body.size() < 1000 ? body.size() : 0;
    for (std::size_t i = 0; i < slow; ++i) {
      connection.Write(body.substr(i, 1));
    }
    connection.Write(body.substr(slow));
  }
}

/// Where programs write that have compiled-in folders of the system.
std::string TempPaths() {
  std::string lines;
  for (const std::string name : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
    lines += "  " + name + "_temp_path " + name + ";\n";
  }
  return lines;
}

std::string StatusLocations() {
  std::string lines;
  for (const std::string code : {"200", "204", "301", "302", "307", "403", "404", "500", "503"}) {
    const std::string text = code[0] == '3' ? "/status/200" : code;
    lines += "    location = /status/" + code + " { return " + code + " " + text + "; }\n";
  }
  return lines;
}

std::string Listen(unsigned int port) {
  return "    listen 127.0.0.1:" + std::to_string(port);
}

std::string Identity(const std::string& name) {
  return "    ssl_certificate " + name + ".chain;\n    ssl_certificate_key " + name + ".key;\n";
}

std::vector<unsigned int> FreePorts(std::size_t count) {
  std::vector<int> sockets;
  std::vector<unsigned int> ports;
  while (sockets.size() < count) {
    sockets.push_back(ListenOnLoopback());
    ports.push_back(PortOf(sockets.back()));
  }
  std::for_each(sockets.begin(), sockets.end(), ::close);
  return ports;
}

}  // namespace

LiveServers& LiveServers::Get() {
  if (!servers) {
    servers = std::make_unique<LiveServers>();
  }
  return *servers;
}

LiveServers::LiveServers() : echo_(Echo) {
  const std::string folder = folder_.Path();
  const std::string authority = "basicConstraints=critical,CA:true\nkeyUsage=critical,keyCertSign,cRLSign\n";
  const std::string server = "basicConstraints=critical,CA:false\nsubjectAltName=";
  MakeCertificate(folder, "root", "", authority);
  MakeCertificate(folder, "middle", "root", authority);
  MakeCertificate(folder, "stranger", "", authority);
  MakeCertificate(folder, "server", "middle", server + "DNS:localhost,IP:127.0.0.1\n");
  MakeCertificate(folder, "elsewhere", "middle", server + "DNS:elsewhere.invalid\n");
  for (const std::string name : {"server", "elsewhere"}) {
    WriteFile(folder_ / (std::wstring(name.begin(), name.end()) + L".chain"), Pem(name) + Pem("middle"));
  }
  StartNginx();
  StartProxy();
}

void LiveServers::StartNginx() {
  const std::string locations =
      StatusLocations() +
      "    location = /uri { return 200 $request_uri; }\n"
      "    location = /via { return 200 '$http_via'; }\n"
      "    location = /head { return 200 '$http_x_name|$http_x_number|$http_content_type|$http_user_agent'; }\n"
      "    location = /echo { proxy_pass http://127.0.0.1:" +
      std::to_string(echo_.Port()) +
      "; }\n"
      "    location = /private { auth_basic private; auth_basic_user_file users; try_files /small =500; }\n";
  const auto configure = [&] {
    const std::vector<unsigned int> ports = FreePorts(3);
    http_port_ = ports[0];
    https_port_ = ports[1];
    elsewhere_port_ = ports[2];
    WriteFile(folder_ / L"nginx.conf",
              "daemon off;\nmaster_process off;\npid nginx.pid;\nerror_log stderr;\nevents {}\nhttp {\n" + TempPaths() +
                  "  access_log off;\n  client_max_body_size 0;\n  default_type text/plain;\n  root " +
                  root_.Path().string() + ";\n  server {\n" + Listen(http_port_) + ";\n" + locations +
                  "  }\n  server {\n" + Listen(https_port_) + " ssl http2;\n" + Identity("server") + locations +
                  "  }\n  server {\n" + Listen(elsewhere_port_) + " ssl;\n" + Identity("elsewhere") + "  }\n}\n");
  };
  const std::string folder = folder_.Path();
  WriteFile(folder_ / L"users", "us\u00E9r:{PLAIN}p@w\n");
  nginx_ = Start({"/usr/sbin/nginx", "-e", "stderr", "-p", folder, "-c", folder + "/nginx.conf"}, configure,
                 [&] { return !ReadFile(folder_ / L"nginx.pid").empty(); });
}

void LiveServers::StartProxy() {
  const std::string folder = folder_.Path();
  const auto configure = [&] {
    proxy_port_ = FreePorts(1)[0];
    WriteFile(folder_ / L"tinyproxy.conf",
              "Port " + std::to_string(proxy_port_) + "\nListen 127.0.0.1\nLogFile \"" + folder +
                  "/proxy.log\"\nLogLevel Info\nBasicAuth agent pa5sword\nMaxClients 50\nTimeout 60\n");
  };
  proxy_ = Start({"/usr/bin/tinyproxy", "-d", "-c", folder + "/tinyproxy.conf"}, configure,
                 [&] { return ProxyLog().find("Accepting connections") != std::string::npos; });
}

std::unique_ptr<ChildProcess> LiveServers::Start(const std::vector<std::string>& command,
                                                 const std::function<void()>& configure,
                                                 const std::function<bool()>& is_ready) {
  // They go with this process, however it ends.
  std::vector<std::string> arguments{"--pdeathsig", "KILL"};
  arguments.insert(arguments.end(), command.begin(), command.end());
  const auto limit = std::chrono::steady_clock::now() + kLimit;
  for (int attempt = 0; attempt < 10; ++attempt) {
    configure();
    auto program = std::make_unique<ChildProcess>("/usr/bin/setpriv", arguments);
    while (program->Wait(std::chrono::milliseconds(5)) < 0 && std::chrono::steady_clock::now() < limit) {
      if (is_ready()) {
        return program;
      }
    }
  }
  throw std::runtime_error(command[0] + " does not start");
}

std::wstring LiveServers::Http(const std::wstring& path) const {
  return L"http://127.0.0.1:" + std::to_wstring(http_port_) + path;
}

std::wstring LiveServers::Https(const std::wstring& path, const std::wstring& host) const {
  return L"https://" + host + L":" + std::to_wstring(https_port_) + path;
}

std::wstring LiveServers::Elsewhere(const std::wstring& path) const {
  return L"https://localhost:" + std::to_wstring(elsewhere_port_) + path;
}

std::string LiveServers::ProxyLog() const {
  return ReadFile(folder_ / L"proxy.log");
}

std::wstring LiveServers::PemPath(const std::string& name) const {
  return folder_ / std::wstring(name.begin(), name.end()) + L".pem";
}

}  // namespace Zelto::Testing
