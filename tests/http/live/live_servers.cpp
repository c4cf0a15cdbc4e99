#include "tests/http/live/live_servers.h"

#include "tests/http/live/shell.h"
#include "tests/support/counter.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <stdexcept>

namespace Zelto::Testing {

namespace {

void Echo(int connection) {
  const std::string request = ReadRequest(connection);
  const std::size_t head = request.find("\r\n\r\n");
  const std::string body = head == std::string::npos ? "" : request.substr(head + 4);
  Write(connection, "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
}

constexpr char kMakeCertificates[] = R"(
  printf '[req]\ndistinguished_name=name\n[name]\n' >req.cnf
  make() {  # NAME ISSUER OPTION...; without an issuer it signs itself
    name=$1 issuer=$2
    shift 2
    openssl req -x509 -config req.cnf -subj "/CN=Zelto $name" -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes \
      -days 2 -keyout $name.key -out $name.pem ${issuer:+-CA $issuer.pem -CAkey $issuer.key} \
      -addext subjectKeyIdentifier=hash "$@"
  }
  authority='-addext basicConstraints=critical,CA:true -addext keyUsage=critical,keyCertSign,cRLSign'
  server='-addext basicConstraints=critical,CA:false -addext subjectAltName='
  make root '' $authority && make middle root $authority && make stranger '' $authority &&
  make server middle ${server}DNS:localhost,IP:127.0.0.1 && make elsewhere middle ${server}DNS:elsewhere.invalid &&
  cat server.pem middle.pem >server.chain && cat elsewhere.pem middle.pem >elsewhere.chain &&
  head -c 300 root.pem >broken.pem && : >nothing.pem)";

// The temporary paths: programs write there that have compiled-in folders of the system.
constexpr char kNginx[] = R"(daemon off;
  master_process off;
  pid nginx.pid;
  error_log stderr;
  events {}
  http {
    client_body_temp_path client_body;
    proxy_temp_path proxy;
    fastcgi_temp_path fastcgi;
    uwsgi_temp_path uwsgi;
    scgi_temp_path scgi;
    access_log off;
    client_max_body_size 0;
    default_type text/plain;
    root "ROOT";
    server {
      listen 127.0.0.1:ELSEWHERE_PORT ssl;
      ssl_certificate elsewhere.chain;
      ssl_certificate_key elsewhere.key;
    }
    server {
      listen 127.0.0.1:HTTP_PORT;
      listen 127.0.0.1:HTTPS_PORT ssl http2;
      ssl_certificate server.chain;
      ssl_certificate_key server.key;
      location = /status/200 { return 200 200; }
      location = /status/204 { return 204; }
      location = /status/302 { return 302 /status/200; }
      location = /status/404 { return 404 404; }
      location = /status/503 { return 503 503; }
      location = /uri { return 200 $request_uri; }
      location = /via { return 200 '$http_via'; }
      location = /head { return 200 '$http_x_name|$http_x_number|$http_content_type|$http_user_agent'; }
      location = /echo { proxy_pass http://127.0.0.1:ECHO_PORT; }
      location = /private { auth_basic private; auth_basic_user_file users; try_files /small =500; }
    }
  })";

void Replace(std::string& text, const std::string& word, const std::string& value) {
  text.replace(text.find(word), word.size(), value);
}

/// Another process may take a free port before the program does: then the program ends and gets others.
std::unique_ptr<ChildProcess> Start(const std::vector<std::string>& command, const std::function<void()>& configure,
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

}  // namespace

LiveServers& LiveServers::Get() {
  static LiveServers servers;
  return servers;
}

LiveServers::LiveServers() : echo_(Echo) {
  for (const char* name :
       {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
    ::unsetenv(name);
  }
  const std::string folder = folder_.Path();
  if (const Result made = Run("cd '" + folder + "'" + kMakeCertificates); made.status != 0) {
    throw std::runtime_error(made.text);
  }
  Serve(L"small", "small");
  WriteFile(folder_ / L"users", "us\u00E9r:{PLAIN}p@w\n");
  nginx_ = Start(
      {"/usr/sbin/nginx", "-e", "stderr", "-p", folder, "-c", folder + "/nginx.conf"}, [&] { ConfigureNginx(); },
      [&] { return !ReadFile(folder_ / L"nginx.pid").empty(); });
  proxy_ = Start(
      {"/usr/bin/tinyproxy", "-d", "-c", folder + "/tinyproxy.conf"}, [&] { ConfigureProxy(); },
      [&] { return ProxyLog().find("Accepting connections") != std::string::npos; });
}

void LiveServers::ConfigureNginx() {
  http_port_ = FreePort();
  https_port_ = FreePort();
  elsewhere_port_ = FreePort();
  std::string text = kNginx;
  Replace(text, "ROOT", root_.Path());
  Replace(text, "HTTP_PORT", std::to_string(http_port_));
  Replace(text, "HTTPS_PORT", std::to_string(https_port_));
  Replace(text, "ELSEWHERE_PORT", std::to_string(elsewhere_port_));
  Replace(text, "ECHO_PORT", std::to_string(echo_.Port()));
  WriteFile(folder_ / L"nginx.conf", text);
}

void LiveServers::ConfigureProxy() {
  proxy_port_ = FreePort();
  WriteFile(folder_ / L"tinyproxy.conf",
            "Port " + std::to_string(proxy_port_) + "\nListen 127.0.0.1\nLogFile \"" + folder_.Path().string() +
                "/proxy.log\"\nLogLevel Info\nBasicAuth agent pa5sword\nMaxClients 50\nTimeout 60\n");
}

std::wstring LiveServers::Http(const std::wstring& path) const {
  return L"http://127.0.0.1:" + std::to_wstring(http_port_) + path;
}

std::wstring LiveServers::Https(const std::wstring& path, const std::wstring& host) const {
  return L"https://" + host + L":" + std::to_wstring(https_port_) + path;
}

std::wstring LiveServers::Elsewhere() const {
  return L"https://localhost:" + std::to_wstring(elsewhere_port_) + L"/small";
}

std::wstring LiveServers::PemPath(const std::string& name) const {
  return folder_ / std::wstring(name.begin(), name.end()) + L".pem";
}

}  // namespace Zelto::Testing
