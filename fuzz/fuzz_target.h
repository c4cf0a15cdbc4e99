/// @file
/// What a fuzz target is: a function over bytes, and what it finds.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Zelto::Fuzz {

/// Bytes from a stranger.
using Bytes = std::span<const std::uint8_t>;

/// A promise that the library broke. Not a `std::exception`: no target takes it for one of the library's own.
struct Finding {
  std::string what;
};

/// @throws Finding  unless the promise holds
inline void Require(bool holds, const char* promise) {
  if (!holds) {
    throw Finding{promise};
  }
}

/// One target: all instances of the program, in the order of their construction.
class Target {
 public:
  using Run = void (*)(Bytes bytes);

  /// @param name  also the name of its folder in the corpus
  Target(const char* name, Run run) { All().push_back({name, run}); }

  struct Entry {
    const char* name;
    Run run;  ///< throws `Finding`; every other exception is a find, too
  };
  static std::vector<Entry>& All() {
    static std::vector<Entry> targets;
    return targets;
  }
};

}  // namespace Zelto::Fuzz
