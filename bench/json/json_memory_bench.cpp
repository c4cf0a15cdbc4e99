// The memory of a document that has been read, beside Boost.JSON and nlohmann: what the heap really gave for it.
#include "bench/json/documents.h"
#include "bench/support/report.h"
#include "zelto/json/json_reader.h"

#include <boost/json.hpp>
#include <malloc.h>
#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

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

template <typename Read>
void PrintUsage(const Document& document, const char* who, const Read& read) {
  const std::size_t bytes = bytes_in_use;
  const std::size_t blocks = blocks_in_use;
  const auto value = read();
  const std::size_t used_bytes = bytes_in_use - bytes;
  const std::size_t used_blocks = blocks_in_use - blocks;
  const std::string what = std::string(document.name) + ", " + std::to_string(document.utf8.size()) + " bytes";
  PrintFigure("memory of " + what, who, static_cast<double>(used_bytes), "bytes");
  PrintFigure("blocks of " + what, who, static_cast<double>(used_blocks), "blocks");
}

void Run(const Document& document) {
  PrintUsage(document, "Zelto", [&] { return Json::JsonReader::Decode(document.utf16, false); });
  PrintUsage(document, "Boost.JSON", [&] { return boost::json::parse(document.utf8); });
  PrintUsage(document, "nlohmann", [&] { return nlohmann::json::parse(document.utf8); });
}

}  // namespace
}  // namespace Zelto::Bench

int main() {
  for (const Zelto::Bench::Document& document : Zelto::Bench::Documents()) {
    Zelto::Bench::Run(document);
  }
}
