/// @file
/// The ways to send a message to another process and wait for its answer that are compared.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

/// One connection to an echo process of its own.
class Peer {
 public:
  virtual ~Peer() = default;
  /// Sends the message `rounds` times and reads each answer. Ends the program when an answer is wrong.
  virtual void RoundTrips(unsigned rounds) = 0;
};

// The server stays on the given processor, as `StayOnProcessor` counts.

/// Our client and our server, UTF-8.
std::unique_ptr<Peer> MakeZeltoPeer(std::size_t message_size, unsigned server_processor);
/// A bare `SOCK_SEQPACKET` socket pair with blocking calls: the floor.
std::unique_ptr<Peer> MakeSocketPeer(std::size_t message_size, unsigned server_processor);
/// ZeroMQ's REQ and REP over ipc.
std::unique_ptr<Peer> MakeZeroMqPeer(std::size_t message_size, unsigned server_processor);
