// The round trip of a message to another process and back, beside a bare socket and ZeroMQ. With arguments it only runs
// one peer, for strace.
#include "bench/support/interleaved.h"
#include "bench/support/processor.h"
#include "peers.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

namespace {

using MakePeer = std::unique_ptr<Peer> (*)(std::size_t, unsigned);

constexpr unsigned kWarmUpRounds = 2000;
constexpr unsigned kBatchRounds = 200;  // how many rounds one timed call makes

std::function<void()> Batch(Peer& peer) {
  peer.RoundTrips(kWarmUpRounds);
  return [&peer] { peer.RoundTrips(kBatchRounds); };
}

void CompareAt(std::size_t size, unsigned server_processor) {
  const auto pipe = MakeZeltoPeer(size, server_processor);
  const auto socket = MakeSocketPeer(size, server_processor);
  const auto socket_again = MakeSocketPeer(size, server_processor);
  const auto zeromq = MakeZeroMqPeer(size, server_processor);
  const auto run_pipe = Batch(*pipe);
  const auto run_socket = Batch(*socket);
  const auto run_socket_again = Batch(*socket_again);
  const auto run_zeromq = Batch(*zeromq);
  const std::string what = std::to_string(kBatchRounds) + " round trips, " + std::to_string(size) + " bytes" +
                           (server_processor == 0 ? ", one processor" : ", two processors");
  constexpr std::size_t kPairs = 101;
  constexpr double kOneBatch = 1;
  Zelto::Bench::Print(what, "bare socket", Zelto::Bench::Compare(run_pipe, run_socket, kPairs, kOneBatch));
  Zelto::Bench::Print(what, "ZeroMQ", Zelto::Bench::Compare(run_pipe, run_zeromq, kPairs, kOneBatch));
  Zelto::Bench::Print("bare socket itself, " + what, "bare socket",
                      Zelto::Bench::Compare(run_socket_again, run_socket, kPairs, kOneBatch));
}

int RunOne(const std::string& name, std::size_t size, unsigned rounds) {
  const MakePeer make = name == "zelto"    ? MakeZeltoPeer
                        : name == "socket" ? MakeSocketPeer
                        : name == "zeromq" ? MakeZeroMqPeer
                                           : nullptr;
  if (make == nullptr) {
    std::fprintf(stderr, "usage: pipes_bench [zelto|socket|zeromq SIZE ROUNDS]\n");
    return 2;
  }
  make(size, 0)->RoundTrips(rounds);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Zelto::Bench::StayOnProcessor(0);
  if (argc == 4) {
    return RunOne(argv[1], std::strtoul(argv[2], nullptr, 10),
                  static_cast<unsigned>(std::strtoul(argv[3], nullptr, 10)));
  }
  const bool one_processor = !Zelto::Bench::StayOnProcessor(1);
  Zelto::Bench::StayOnProcessor(0);
  for (unsigned server_processor = 0; server_processor < (one_processor ? 1U : 2U); ++server_processor) {
    CompareAt(100, server_processor);
    CompareAt(4096, server_processor);
  }
  return 0;
}
