// Reading and writing documents beside Boost.JSON and nlohmann. First the ratios, measured in turns; then each
// operation alone, by Google Benchmark, whose options the program takes.
#include "bench/json/documents.h"
#include "bench/support/interleaved.h"
#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"

#include <benchmark/benchmark.h>
#include <boost/json.hpp>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <functional>
#include <string>

namespace Zelto::Bench {
namespace {

using Json::JsonReader;
using Json::JsonWriter;

// All three must have read the same document.
void CheckAgreement(const Document& document) {
  const std::wstring ours = JsonWriter::Encode(JsonReader::Decode(document.utf16, false));
  const std::string utf8 = Utilities::StringUtilities::Utf16ToUtf8(ours);
  if (nlohmann::json::parse(utf8) != nlohmann::json::parse(document.utf8) ||
      boost::json::parse(utf8) != boost::json::parse(document.utf8)) {
    std::fprintf(stderr, "The readers disagree on %s\n", document.name);
    std::exit(EXIT_FAILURE);
  }
}

void Run(const Document& document) {
  CheckAgreement(document);
  const std::string name = std::string(document.name) + ", " + std::to_string(document.utf8.size()) + " bytes";
  const std::string decode = "Decode " + name;
  const std::string encode = "Encode " + name;
  const auto ours = JsonReader::Decode(document.utf16, false);
  const boost::json::value boost_value = boost::json::parse(document.utf8);
  const nlohmann::json nlohmann_value = nlohmann::json::parse(document.utf8);
  const auto our_decode = [&] { Keep(JsonReader::Decode(document.utf16, false)); };
  const auto our_encode = [&] { Keep(JsonWriter::Encode(ours)); };
  const auto boost_decode = [&] { Keep(boost::json::parse(document.utf8)); };
  const auto boost_encode = [&] { Keep(boost::json::serialize(boost_value)); };
  const auto nlohmann_decode = [&] { Keep(nlohmann::json::parse(document.utf8)); };
  const auto nlohmann_encode = [&] { Keep(nlohmann_value.dump()); };
  Print(decode.c_str(), "Boost.JSON", Compare(our_decode, boost_decode));
  Print(decode.c_str(), "nlohmann", Compare(our_decode, nlohmann_decode));
  Print(encode.c_str(), "Boost.JSON", Compare(our_encode, boost_encode));
  Print(encode.c_str(), "nlohmann", Compare(our_encode, nlohmann_encode));
}

void Register(const Document& document) {
  const auto add = [&document](const char* operation, const std::function<void()>& action) {
    benchmark::RegisterBenchmark((std::string(operation) + "/" + document.name).c_str(),
                                 [&document, action](benchmark::State& state) {
                                   for (auto _ : state) {
                                     action();
                                   }
                                   state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                                                           static_cast<std::int64_t>(document.utf8.size()));
                                 });
  };
  const auto ours = JsonReader::Decode(document.utf16, false);
  add("JsonReader::Decode", [&document] { Keep(JsonReader::Decode(document.utf16, false)); });
  add("boost::json::parse", [&document] { Keep(boost::json::parse(document.utf8)); });
  add("JsonWriter::Encode", [ours] { Keep(JsonWriter::Encode(ours)); });
  add("boost::json::serialize", [value = boost::json::parse(document.utf8)] { Keep(boost::json::serialize(value)); });
}

}  // namespace
}  // namespace Zelto::Bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  const auto documents = Zelto::Bench::Documents();
  for (const Zelto::Bench::Document& document : documents) {
    Zelto::Bench::Run(document);
  }
  for (const Zelto::Bench::Document& document : documents) {
    Zelto::Bench::Register(document);
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
