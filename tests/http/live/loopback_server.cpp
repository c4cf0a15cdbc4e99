#include "tests/http/live/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace Zelto::Testing {

namespace {

std::size_t BodyLength(const std::string& head) {
  const std::size_t field = head.find("Content-Length:");
  return field == std::string::npos ? 0 : std::strtoul(head.c_str() + field + 15, nullptr, 10);
}

}  // namespace

int ListenOnLoopback() {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listener, 64) != 0) {
    throw std::runtime_error("no free loopback port");
  }
  return listener;
}

unsigned int PortOf(int socket) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

std::string Connection::ReadRequest() {
  std::string request;
  std::size_t whole = std::string::npos;
  char buffer[65536];
  while (request.size() < whole) {
    const ssize_t count = ::recv(socket_, buffer, sizeof buffer, 0);
    if (count <= 0) {
      return {};
    }
    request.append(buffer, static_cast<std::size_t>(count));
    const std::size_t end = request.find("\r\n\r\n");
    if (whole == std::string::npos && end != std::string::npos) {
      whole = end + 4 + BodyLength(request.substr(0, end));
    }
  }
  return request;
}

void Connection::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) {
      return;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void Connection::WaitForEnd() {
  char buffer[4096];
  while (::recv(socket_, buffer, sizeof buffer, 0) > 0) {
  }
}

void Connection::Reset() {
  const linger at_once{1, 0};
  ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
}

LoopbackServer::LoopbackServer(std::function<void(Connection&)> handler)
    : handler_(std::move(handler)), listener_(ListenOnLoopback()), port_(PortOf(listener_)) {
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

std::wstring LoopbackServer::Url(const std::wstring& path) const {
  return L"http://127.0.0.1:" + std::to_wstring(port_) + path;
}

void LoopbackServer::Serve() {
  for (int socket; (socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    const int at_once = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
    std::unique_lock lock(mutex_);
    if (!stopping_) {
      open_ = socket;
      lock.unlock();
      Connection connection(socket);
      handler_(connection);
      lock.lock();
      open_ = -1;
    }
    ::close(socket);
  }
}

}  // namespace Zelto::Testing
