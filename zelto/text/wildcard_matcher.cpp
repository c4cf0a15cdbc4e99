#include "zelto/text/wildcard_matcher.h"

#include "zelto/text/ascii.h"
#include "zelto/text/bad_conversion.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <map>
#include <regex>

namespace Zelto::Utilities {
namespace {

constexpr std::size_t kStatesPerBlock = 64;
constexpr std::size_t kAsciiUnits = 128;

// The steps that every block has: of line ends, and of units that the expression does not name.
constexpr std::uint8_t kLineEndStep = 0;
constexpr std::uint8_t kUnnamedStep = 1;

constexpr std::uint64_t Bit(std::size_t state) {
  return std::uint64_t{1} << (state % kStatesPerBlock);
}

// Calls `use` with each unit of UTF-16 that the characters stand for, until it returns false.
template <typename Use>
bool ForEachUnitWhile(std::wstring_view text, const Use& use) {
  for (const wchar_t character : text) {
    const std::uint32_t value = ValueOf(character);
    if (value <= 0xFFFF) [[likely]] {
      if (!use(static_cast<char16_t>(value))) {
        return false;
      }
      continue;
    }
    if (value > kMaximumCodePoint) {
      ThrowBadConversion();
    }
    bool go_on = true;
    ForEachUnit(character, [&](char16_t unit) { go_on = go_on && use(unit); });
    if (!go_on) {
      return false;
    }
  }
  return true;
}

}  // namespace

// An expression as its atoms, and the loops at the states between them: state n stands before atom n.
struct WildcardMatcher::Program {
  struct Atom {
    bool any = false;
    char16_t unit = 0;
  };

  std::vector<Atom> atoms;
  std::vector<bool> loops_any{false};
  std::vector<bool> loops_atom_before{false};

  explicit Program(std::u16string_view regex);

  void Append(Atom atom) {
    atoms.push_back(atom);
    loops_any.push_back(false);
    loops_atom_before.push_back(false);
  }
};

WildcardMatcher::Program::Program(std::u16string_view regex) {
  bool repeatable = false;
  for (std::size_t i = 0; i < regex.size(); ++i) {
    const char16_t unit = regex[i];
    if (unit == u'+') {
      if (!repeatable) {
        throw std::regex_error(std::regex_constants::error_badrepeat);
      }
      loops_atom_before.back() = true;
      repeatable = false;
    } else if (unit == u'.' && i + 1 < regex.size() && regex[i + 1] == u'*') {
      loops_any.back() = true;
      ++i;
      repeatable = false;
    } else {
      if (unit == u'\\') {
        ++i;
      }
      Append({unit == u'.', Ascii::ToLower(regex[i])});
      repeatable = true;
    }
  }
}

WildcardMatcher::WildcardMatcher(std::wstring_view regex) {
  std::u16string units;
  units.reserve(regex.size());
  ForEachUnitWhile(regex, [&units](char16_t unit) {
    units.push_back(unit);
    return true;
  });
  const Program program(units);
  final_state_ = program.atoms.size();
  blocks_.reserve(final_state_ / kStatesPerBlock + 1);
  for (std::size_t state = 0; state <= final_state_; state += kStatesPerBlock) {
    blocks_.push_back(MakeBlock(program, state));
  }
}

WildcardMatcher::Block WildcardMatcher::MakeBlock(const Program& program, std::size_t first_state) {
  Step any;
  std::map<char16_t, Step> named;
  const std::size_t end = std::min(first_state + kStatesPerBlock, program.atoms.size() + 1);
  for (std::size_t state = first_state; state < end; ++state) {
    if (program.loops_any[state]) {
      any.stay |= Bit(state);
    }
    if (state == 0) {
      continue;
    }
    const Program::Atom& atom = program.atoms[state - 1];
    Step& step = atom.any ? any : named[atom.unit];
    step.advance |= Bit(state);
    if (program.loops_atom_before[state]) {
      step.stay |= Bit(state);
    }
  }

  Block block;
  block.steps = {Step{}, any};
  block.ascii_steps.fill(kUnnamedStep);
  block.ascii_steps[u'\n'] = block.ascii_steps[u'\r'] = kLineEndStep;
  for (const auto& [unit, step] : named) {
    if (unit < kAsciiUnits) {
      const auto index = static_cast<std::uint8_t>(block.steps.size());
      block.ascii_steps[unit] = block.ascii_steps[Ascii::ToUpper(unit)] = index;
    } else {
      block.others.push_back(unit);
    }
    const Step unnamed = IsLineEnd(unit) ? Step{} : any;
    block.steps.push_back({step.advance | unnamed.advance, step.stay | unnamed.stay});
  }
  return block;
}

const WildcardMatcher::Step& WildcardMatcher::Block::StepFor(char16_t unit) const {
  if (unit < kAsciiUnits) {
    return steps[ascii_steps[unit]];
  }
  const auto found = std::lower_bound(others.begin(), others.end(), unit);
  if (found != others.end() && *found == unit) {
    return steps[steps.size() - static_cast<std::size_t>(others.end() - found)];
  }
  return steps[IsLineEnd(unit) ? kLineEndStep : kUnnamedStep];
}

bool WildcardMatcher::Match(std::wstring_view text) const {
  return blocks_.size() == 1 ? MatchInOneBlock(text) : MatchInManyBlocks(text);
}

bool WildcardMatcher::MatchInOneBlock(std::wstring_view text) const {
  const Block& block = blocks_.front();
  std::uint64_t states = Bit(0);
  ForEachUnitWhile(text, [&](char16_t unit) {
    const Step& step = block.StepFor(unit);
    states = (states << 1 & step.advance) | (states & step.stay);
    return states != 0;
  });
  return (states & Bit(final_state_)) != 0;
}

bool WildcardMatcher::MatchInManyBlocks(std::wstring_view text) const {
  std::vector<std::uint64_t> states(blocks_.size(), 0);
  states.front() = Bit(0);
  // Blocks outside of these have no states.
  std::size_t first = 0;
  std::size_t end = 1;
  ForEachUnitWhile(text, [&](char16_t unit) {
    std::uint64_t carry = 0;
    for (std::size_t i = first; i < end || (carry != 0 && i < states.size()); ++i) {
      const Step& step = blocks_[i].StepFor(unit);
      const std::uint64_t before = states[i];
      states[i] = ((before << 1 | carry) & step.advance) | (before & step.stay);
      carry = before >> (kStatesPerBlock - 1);
      end = std::max(end, i + 1);
    }
    while (first < end && states[first] == 0) {
      ++first;
    }
    while (end > first && states[end - 1] == 0) {
      --end;
    }
    return first < end;
  });
  return (states.back() & Bit(final_state_)) != 0;
}

}  // namespace Zelto::Utilities
