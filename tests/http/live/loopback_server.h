/// @file
/// A TCP server of the test's own, for what a well-behaved server does not do.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace Zelto::Testing {

// On an accepted connection; they end quietly when the peer or the server has gone.

/// Reads a whole request, with as much body as "Content-Length" says. Without one, stays until the peer closes or the
/// server stops. @return head and body; empty if there is no more
std::string ReadRequest(int connection);
void Write(int connection, std::string_view bytes);

/// Calls a handler for one connection after the other, on a thread of its own; each is closed after it.
class LoopbackServer {
 public:
  explicit LoopbackServer(std::function<void(int connection)> handler);
  /// Ends what is open and waits for the handler.
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  unsigned int Port() const { return port_; }
  /// The address of this server.
  std::wstring Url() const { return L"http://127.0.0.1:" + std::to_wstring(port_) + L"/"; }

 private:
  void Serve();

  const std::function<void(int connection)> handler_;
  const int listener_;
  unsigned int port_;
  std::mutex mutex_;
  int open_ = -1;
  bool stopping_ = false;
  std::thread thread_;
};

/// A handler that takes requests, and answers none.
inline void StaySilent(int connection) {
  ReadRequest(connection);
  ReadRequest(connection);
}

/// A port at which nobody listens.
inline unsigned int FreePort() {
  return LoopbackServer([](int) {}).Port();
}

}  // namespace Zelto::Testing
