#include "tests/http/live/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace Zelto::Testing {

std::string ReadRequest(int connection) {
  std::string request;
  std::size_t body = std::string::npos;
  std::size_t length = 0;
  char buffer[65536];
  while (body == std::string::npos || request.size() < body + length) {
    const ssize_t count = ::recv(connection, buffer, sizeof buffer, 0);
    if (count <= 0) {
      return {};
    }
    request.append(buffer, static_cast<std::size_t>(count));
    const std::size_t end = request.find("\r\n\r\n");
    if (body == std::string::npos && end != std::string::npos) {
      const std::size_t field = request.find("Content-Length:");
      length = field < end ? std::strtoul(request.c_str() + field + 15, nullptr, 10) : 0;
      body = end + 4;
    }
  }
  return request;
}

void Write(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) {
      return;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

LoopbackServer::LoopbackServer(std::function<void(int connection)> handler)
    : handler_(std::move(handler)), listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  auto* const name = reinterpret_cast<sockaddr*>(&address);
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::bind(listener_, name, size) != 0 || ::listen(listener_, 64) != 0) {
    throw std::runtime_error("no free loopback port");
  }
  ::getsockname(listener_, name, &size);
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Serve(); });
}

LoopbackServer::~LoopbackServer() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    ::shutdown(listener_, SHUT_RDWR);
    ::shutdown(open_, SHUT_RDWR);
  }
  thread_.join();
  ::close(listener_);
}

void LoopbackServer::Serve() {
  for (int socket; (socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    std::unique_lock lock(mutex_);
    if (!stopping_) {
      open_ = socket;
      lock.unlock();
      handler_(socket);
      lock.lock();
      open_ = -1;
    }
    ::close(socket);
  }
}

}  // namespace Zelto::Testing
