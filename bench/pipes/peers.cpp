#include "peers.h"

#include "echo_process.h"

#include <zelto/pipes/async_named_pipe_client.h>
#include <zelto/pipes/multi_client_named_pipe_server.h>

#include <sys/socket.h>
#include <unistd.h>
#include <zmq.h>

#include <cstdlib>
#include <iostream>
#include <vector>

namespace {

using Zelto::Utilities::AsyncNamedPipeClient;
using Zelto::Utilities::MultiClientNamedPipeServer;
using Zelto::Utilities::NamedPipeMessageEncoding;
using Zelto::Utilities::SharedHandle;

constexpr std::size_t kLargestMessage = 64 * 1024;

void Require(bool condition, const char* what) {
  if (!condition) {
    std::cerr << "benchmark: " << what << std::endl;
    std::exit(1);
  }
}

class ZeltoPeer : public Peer {
 public:
  ZeltoPeer(std::size_t size, unsigned processor)
      : name_(L"zelto-bench-" + std::to_wstring(::getpid()) + L"-" + std::to_wstring(size)),
        server_(processor,
                [this](const auto& ready) {
                  const auto server = MultiClientNamedPipeServer::Create(
                      name_, [](unsigned, std::wstring message) { return message; }, NamedPipeMessageEncoding::Utf8,
                      5000, 4096, false, [](unsigned) {});
                  server->Start(nullptr);
                  ready();
                  ::pause();
                }),
        message_(size, L'm'),
        client_(name_, 5000) {
    client_.Open(SharedHandle());
  }
  void RoundTrips(unsigned rounds) override {
    for (unsigned i = 0; i < rounds; ++i) {
      client_.WriteMessage(message_, true).get();
      Require(client_.ReadMessage().get().size() == message_.size(), "wrong answer from the pipe");
    }
  }

 private:
  std::wstring name_;
  EchoProcess server_;
  std::wstring message_;
  AsyncNamedPipeClient client_;
};

class SocketPeer : public Peer {
 public:
  SocketPeer(std::size_t size, unsigned processor)
      : sockets_(MakePair()),
        server_(processor,
                [this](const auto& ready) {
                  ::close(sockets_.ours);
                  ready();
                  std::vector<char> buffer(kLargestMessage);
                  ssize_t count = 0;
                  while ((count = ::recv(sockets_.theirs, buffer.data(), buffer.size(), 0)) > 0) {
                    ::send(sockets_.theirs, buffer.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL);
                  }
                }),
        message_(size, 'm'),
        answer_(kLargestMessage) {}
  ~SocketPeer() override {
    ::close(sockets_.ours);
    ::close(sockets_.theirs);
  }
  void RoundTrips(unsigned rounds) override {
    for (unsigned i = 0; i < rounds; ++i) {
      ::send(sockets_.ours, message_.data(), message_.size(), MSG_NOSIGNAL);
      const ssize_t count = ::recv(sockets_.ours, answer_.data(), answer_.size(), 0);
      Require(count == static_cast<ssize_t>(message_.size()), "wrong answer from the socket");
    }
  }

 private:
  struct Pair {
    int ours;
    int theirs;
  };
  static Pair MakePair() {
    int sockets[2];
    Require(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) == 0, "no socket pair");
    return {sockets[0], sockets[1]};
  }

  Pair sockets_;
  EchoProcess server_;
  std::string message_;
  std::vector<char> answer_;
};

class ZeroMqPeer : public Peer {
 public:
  ZeroMqPeer(std::size_t size, unsigned processor)
      : address_("ipc:///tmp/zelto-bench-" + std::to_string(::getpid()) + "-" + std::to_string(size)),
        server_(processor,
                [this](const auto& ready) {
                  void* context = zmq_ctx_new();
                  void* socket = zmq_socket(context, ZMQ_REP);
                  Require(zmq_bind(socket, address_.c_str()) == 0, "ZeroMQ cannot bind");
                  ready();
                  std::vector<char> buffer(kLargestMessage);
                  int count = 0;
                  while ((count = zmq_recv(socket, buffer.data(), buffer.size(), 0)) >= 0) {
                    zmq_send(socket, buffer.data(), static_cast<std::size_t>(count), 0);
                  }
                }),
        message_(size, 'm'),
        answer_(kLargestMessage),
        context_(zmq_ctx_new()),
        socket_(zmq_socket(context_, ZMQ_REQ)) {
    Require(zmq_connect(socket_, address_.c_str()) == 0, "ZeroMQ cannot connect");
  }
  ~ZeroMqPeer() override {
    zmq_close(socket_);
    zmq_ctx_term(context_);
    ::unlink(address_.c_str() + sizeof "ipc://" - 1);
  }
  void RoundTrips(unsigned rounds) override {
    for (unsigned i = 0; i < rounds; ++i) {
      zmq_send(socket_, message_.data(), message_.size(), 0);
      const int count = zmq_recv(socket_, answer_.data(), answer_.size(), 0);
      Require(count == static_cast<int>(message_.size()), "wrong answer from ZeroMQ");
    }
  }

 private:
  std::string address_;
  EchoProcess server_;
  std::string message_;
  std::vector<char> answer_;
  void* context_;
  void* socket_;
};

}  // namespace

std::unique_ptr<Peer> MakeZeltoPeer(std::size_t message_size, unsigned server_processor) {
  return std::make_unique<ZeltoPeer>(message_size, server_processor);
}
std::unique_ptr<Peer> MakeSocketPeer(std::size_t message_size, unsigned server_processor) {
  return std::make_unique<SocketPeer>(message_size, server_processor);
}
std::unique_ptr<Peer> MakeZeroMqPeer(std::size_t message_size, unsigned server_processor) {
  return std::make_unique<ZeroMqPeer>(message_size, server_processor);
}
