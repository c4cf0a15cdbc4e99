/// @file
/// A TCP server of the test's own, for what a well-behaved server does not do.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace Zelto::Testing {

/// Opens a listening socket on a free port of the loopback address.
int ListenOnLoopback();
/// The port that a socket is bound to.
unsigned int PortOf(int socket);

/// One accepted connection. Its functions end quietly when the peer or the server has gone.
class Connection {
 public:
  explicit Connection(int socket) : socket_(socket) {}

  /// Reads a whole request, with as much body as "Content-Length" says. @return empty when the peer has gone
  std::string ReadRequest();
  void Write(std::string_view bytes);
  /// Stays until the peer closes or the server stops.
  void WaitForEnd();
  /// Ends the connection with a reset.
  void Reset();

 private:
  int socket_;
};

/// Calls a handler for each connection, on a thread of its own; the connection is closed after it.
class LoopbackServer {
 public:
  explicit LoopbackServer(std::function<void(Connection&)> handler);
  /// Ends what is open and waits for the handlers.
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  unsigned int Port() const { return port_; }
  /// The address of a path on this server.
  std::wstring Url(const std::wstring& path) const;

 private:
  void Accept();
  void Serve(int socket);

  const std::function<void(Connection&)> handler_;
  const int listener_;
  const unsigned int port_;
  std::mutex mutex_;
  std::vector<int> open_;
  std::vector<std::thread> handlers_;
  bool stopping_ = false;
  std::thread acceptor_;
};

}  // namespace Zelto::Testing
