// Reading and writing documents beside other libraries. With arguments it only runs one of our own operations, for
// profilers.
#include "bench/json/documents.h"
#include "bench/json/peers.h"
#include "bench/support/interleaved.h"
#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Zelto::Bench {
namespace {

using Json::JsonReader;
using Json::JsonWriter;

// All must have read the same document.
void CheckAgreement(const Document& document, const std::vector<JsonPeer>& peers) {
  const std::wstring ours = JsonWriter::Encode(JsonReader::Decode(document.utf16, false));
  const auto expected = nlohmann::json::parse(Utilities::StringUtilities::Utf16ToUtf8(ours));
  for (const JsonPeer& peer : peers) {
    if (nlohmann::json::parse(peer.written) != expected) {
      std::fprintf(stderr, "We and %s disagree on %s\n", peer.name, document.name);
      std::exit(EXIT_FAILURE);
    }
  }
}

void Run(const Document& document) {
  const std::vector<JsonPeer> peers = MakeJsonPeers(document);
  CheckAgreement(document, peers);
  const std::string name = std::string(document.name) + ", " + std::to_string(document.utf8.size()) + " bytes";
  const auto ours = JsonReader::Decode(document.utf16, false);
  for (const JsonPeer& peer : peers) {
    Print("decode " + name, peer.name,
          CompareComputing([&] { Keep(JsonReader::Decode(document.utf16, false)); }, peer.decode));
  }
  for (const JsonPeer& peer : peers) {
    Print("encode " + name, peer.name, CompareComputing([&] { Keep(JsonWriter::Encode(ours)); }, peer.encode));
  }
}

int RunOne(const std::string& operation, const std::string& name, int rounds) {
  for (const Document& document : Documents()) {
    if (document.name != name) {
      continue;
    }
    const auto object = JsonReader::Decode(document.utf16, false);
    for (int i = 0; i < rounds; ++i) {
      if (operation == "decode") {
        Keep(JsonReader::Decode(document.utf16, false));
      } else {
        Keep(JsonWriter::Encode(object));
      }
    }
    return EXIT_SUCCESS;
  }
  return EXIT_FAILURE;
}

}  // namespace
}  // namespace Zelto::Bench

int main(int argc, char** argv) {
  if (argc == 4) {
    return Zelto::Bench::RunOne(argv[1], argv[2], std::atoi(argv[3]));
  }
  if (argc != 1) {
    std::fprintf(stderr, "usage: json_bench [decode|encode DOCUMENT ROUNDS]\n");
    return 2;
  }
  for (const Zelto::Bench::Document& document : Zelto::Bench::Documents()) {
    Zelto::Bench::Run(document);
  }
}
