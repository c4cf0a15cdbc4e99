// Requests over loopback beside bare libcurl with the same options. With arguments it only runs one client, for
// counting its instructions.
#include "bench/support/interleaved.h"
#include "bench/support/processor.h"
#include "clients.h"
#include "server_process.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

constexpr std::size_t kSmall = 1024;
constexpr std::size_t kLarge = 100U << 20;
constexpr std::size_t kPairs = 51;
constexpr double kOneBatch = 1;

std::string Url(unsigned int port, std::size_t size) {
  return "http://127.0.0.1:" + std::to_string(port) + "/" + std::to_string(size);
}

void Get(Client& client, std::size_t size, unsigned times) {
  for (unsigned i = 0; i < times; ++i) {
    if (client.Get() != size) {
      throw std::runtime_error("the body is not whole");
    }
  }
}

void CompareAt(unsigned int port, std::size_t size, unsigned times) {
  const std::string url = Url(port, size);
  const auto batch = [&](Client& client) { return [&, times] { Get(client, size, times); }; };
  const auto zelto = MakeZeltoClient(url, false);
  const auto text = MakeZeltoClient(url, true);
  const auto bare = MakeBareClient(url, port);
  const auto bare_again = MakeBareClient(url, port);
  const std::string what = std::to_string(times) + " GETs of " + std::to_string(size) + " bytes";
  const auto compare = [&](const std::string& name, Client& ours) {
    Zelto::Bench::Print(name, "bare libcurl", Zelto::Bench::Compare(batch(ours), batch(*bare), kPairs, kOneBatch));
  };
  compare(what, *zelto);
  compare(what + ", into text", *text);
  compare("bare libcurl itself, " + what, *bare_again);
}

}  // namespace

int main(int argc, char** argv) {
  Zelto::Bench::StayOnProcessor(0);
  const unsigned int port = StartServerProcess();
  if (argc == 4) {
    const std::string name = argv[1];
    const std::size_t size = std::strtoul(argv[2], nullptr, 10);
    const std::string url = Url(port, size);
    const auto client = name == "bare" ? MakeBareClient(url, port) : MakeZeltoClient(url, name == "text");
    Get(*client, size, static_cast<unsigned>(std::strtoul(argv[3], nullptr, 10)));
    return 0;
  }
  if (argc != 1) {
    std::fprintf(stderr, "usage: http_bench [zelto|text|bare SIZE TIMES]\n");
    return 2;
  }
  CompareAt(port, kSmall, 1000);
  CompareAt(port, kLarge, 1);
  return 0;
}
