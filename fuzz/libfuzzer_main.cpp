// libFuzzer's way into the one target of a program. What the target throws ends the program, and is the find.
#include "fuzz/fuzz_target.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    Zelto::Fuzz::Target::All().front().run({data, size});
  } catch (const Zelto::Fuzz::Finding& finding) {
    std::fprintf(stderr, "FINDING: %s\n", finding.what.c_str());
    std::abort();
  }
  return 0;
}
