/// @file
/// A TCP server of the test's own, for what a well-behaved server does not do.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace Zelto::Testing {

/// One accepted connection. Its functions end quietly when the peer or the server has gone.
class Connection {
 public:
  explicit Connection(int socket) : socket_(socket) {}

  /// Reads a whole request, with as much body as "Content-Length" says. @return its body
  std::string ReadRequest();
  void Write(std::string_view bytes);
  /// Stays until the peer closes or the server stops.
  void WaitForEnd();
  /// Ends the connection with a reset.
  void Reset();

 private:
  int socket_;
};

/// Calls a handler for one connection after the other, on a thread of its own; each is closed after it.
class LoopbackServer {
 public:
  explicit LoopbackServer(std::function<void(Connection&)> handler);
  /// Ends what is open and waits for the handler.
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  unsigned int Port() const { return port_; }
  /// The address of this server.
  std::wstring Url() const { return L"http://127.0.0.1:" + std::to_wstring(port_) + L"/"; }

 private:
  void Serve();

  const std::function<void(Connection&)> handler_;
  const int listener_;
  unsigned int port_;
  std::mutex mutex_;
  int open_ = -1;
  bool stopping_ = false;
  std::thread thread_;
};

/// A port at which nobody listens.
inline unsigned int FreePort() {
  return LoopbackServer([](Connection&) {}).Port();
}

}  // namespace Zelto::Testing
