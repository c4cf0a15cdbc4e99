#include "server_process.h"

#include "tests/http/live/loopback_server.h"

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using Zelto::Testing::LoopbackServer;
using Zelto::Testing::ReadRequest;
using Zelto::Testing::Write;

// Until the client has closed.
void Serve(int connection) {
  static const std::string block(1 << 20, 'x');
  for (std::string request; !(request = ReadRequest(connection)).empty();) {
    std::size_t left = std::strtoul(request.c_str() + request.find('/') + 1, nullptr, 10);
    const std::size_t first = std::min<std::size_t>(left, 16384);
    Write(connection, "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(left) +
                          "\r\n\r\n" + block.substr(0, first));
    for (left -= first; left > 0; left -= std::min(left, block.size())) {
      Write(connection, {block.data(), std::min(left, block.size())});
    }
  }
}

}  // namespace

unsigned int StartServerProcess() {
  int ports[2];
  if (::pipe(ports) != 0) {
    throw std::runtime_error("no pipe");
  }
  if (::fork() == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The clients that are compared keep their connections open at the same time.
    const LoopbackServer server([](int connection) { std::thread(Serve, ::dup(connection)).detach(); });
    const unsigned int port = server.Port();
    if (::write(ports[1], &port, sizeof port) == sizeof port) {
      ::pause();
    }
    ::_exit(1);
  }
  unsigned int port = 0;
  if (::read(ports[0], &port, sizeof port) != sizeof port) {
    throw std::runtime_error("the server does not start");
  }
  return port;
}
