/// @file
/// The regular expressions that wildcard patterns become, matched in linear time. Not installed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Utilities {

/// A non-deterministic automaton over units, all of whose states are followed at once, one bit each.
///
/// State n says that the first n atoms of the expression are matched; an atom is one unit or ".". A unit of the text
/// moves a state on when it matches the next atom, and keeps it when the state has a loop for it: ".*" is a loop over
/// any unit at the state it stands at, and a plus is a loop over its atom at the state behind that atom. So no state
/// moves without a unit, and a step is a shift and two masks for 64 states:
///
///     next = (states << 1 & advance[unit]) | (states & stay[unit])
class WildcardMatcher {
 public:
  /// Compiles an expression of units, escaped units, ".", ".*" and "+".
  /// @throws std::regex_error  `error_badrepeat` on a plus that has nothing to repeat
  /// @throws std::range_error  "bad conversion" on a unit above 0x10FFFF
  explicit WildcardMatcher(std::wstring_view regex);

  /// Whether the expression matches the whole text, ASCII letters in either case.
  /// @throws std::range_error  "bad conversion" when a unit above 0x10FFFF is read
  bool Match(std::wstring_view text) const;

 private:
  struct Program;

  // What one unit does to 64 states.
  struct Step {
    std::uint64_t advance = 0;
    std::uint64_t stay = 0;
  };

  // 64 states, and the steps of the units that the expression names at them. Each ASCII unit has its index; the others
  // are sorted, their steps are the last ones, in the same order.
  struct Block {
    std::vector<Step> steps;
    std::vector<char16_t> others;
    std::array<std::uint8_t, 128> ascii_steps{};

    const Step& StepFor(char16_t unit) const;
  };

  static Block MakeBlock(const Program& program, std::size_t first_state);
  bool MatchInOneBlock(std::wstring_view text) const;
  bool MatchInManyBlocks(std::wstring_view text) const;

  std::vector<Block> blocks_;
  std::size_t final_state_ = 0;
};

}  // namespace Zelto::Utilities
