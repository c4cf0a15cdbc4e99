// The memory of a document that has been read, beside Boost.JSON and nlohmann: what the heap really gave for it.
#include "bench/json/documents.h"
#include "zelto/json/json_reader.h"

#include <boost/json.hpp>
#include <malloc.h>
#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

std::size_t bytes_in_use = 0;
std::size_t blocks_in_use = 0;

}  // namespace

void* operator new(std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  bytes_in_use += malloc_usable_size(memory);
  ++blocks_in_use;
  return memory;
}

void operator delete(void* memory) noexcept {
  if (memory != nullptr) {
    bytes_in_use -= malloc_usable_size(memory);
    --blocks_in_use;
  }
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace Zelto::Bench {
namespace {

struct Usage {
  double bytes;
  std::size_t blocks;
};

template <typename Read>
Usage UsageOf(const Read& read) {
  const std::size_t bytes = bytes_in_use;
  const std::size_t blocks = blocks_in_use;
  const auto document = read();
  return {static_cast<double>(bytes_in_use - bytes), blocks_in_use - blocks};
}

void Run(const Document& document) {
  const Usage ours = UsageOf([&] { return Json::JsonReader::Decode(document.utf16, false); });
  const Usage boost = UsageOf([&] { return boost::json::parse(document.utf8); });
  const Usage nlohmann = UsageOf([&] { return nlohmann::json::parse(document.utf8); });
  std::printf(
      "%-10s %7zu bytes of text   ours %9.0f in %6zu blocks   of nlohmann's %9.0f in %6zu: %.2f   of Boost.JSON's "
      "%9.0f in %6zu: %.2f\n",
      document.name, document.utf8.size(), ours.bytes, ours.blocks, nlohmann.bytes, nlohmann.blocks,
      ours.bytes / nlohmann.bytes, boost.bytes, boost.blocks, ours.bytes / boost.bytes);
}

}  // namespace
}  // namespace Zelto::Bench

int main() {
  for (const Zelto::Bench::Document& document : Zelto::Bench::Documents()) {
    Zelto::Bench::Run(document);
  }
}
