#include "zelto/time/iso8601.h"

#include "zelto/text/ascii.h"
#include "zelto/text/utf16_units.h"

#include <stdexcept>

namespace Zelto::Utilities::Iso8601 {
namespace {

constexpr std::size_t kShortestText = 4;
constexpr std::size_t kTimeSize = 8;      // hh:mm:ss
constexpr std::size_t kGroupSize = 9;     // a separator and hh:mm:ss
constexpr std::size_t kFractionSize = 4;  // any unit and three digits
constexpr std::size_t kZoneSize = 6;      // +hh:mm
constexpr std::size_t kUtcZoneSize = 1;   // Z

// A character above U+FFFF stands for two units, and what follows here is never a second one.
bool IsUnitWithinLine(wchar_t character) noexcept {
  return ValueOf(character) <= 0xFFFF && !IsLineEnd(static_cast<char16_t>(character));
}

// In the patterns below, 'd' is a digit, '.' any unit but a line end, everything else itself.
bool Fits(std::wstring_view text, std::string_view pattern) noexcept {
  if (text.size() < pattern.size()) {
    return false;
  }
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const wchar_t unit = text[i];
    const bool fits = pattern[i] == 'd'   ? Ascii::IsDigit(unit)
                      : pattern[i] == '.' ? IsUnitWithinLine(unit)
                                          : unit == static_cast<wchar_t>(pattern[i]);
    if (!fits) {
      return false;
    }
  }
  return true;
}

// The positions that a reading can have reached, as seen from the current one: bit k stands for k characters on.
class Frontier {
 public:
  void Add(std::size_t distance) noexcept { bits_ |= 1U << distance; }
  bool IsHere() const noexcept { return (bits_ & 1U) != 0; }
  bool IsEmpty() const noexcept { return bits_ == 0; }
  void Advance() noexcept { bits_ >>= 1; }

 private:
  unsigned bits_ = 0;
};

// Reads groups (where allowed), fractions and zones to the end. A fraction may begin with any unit, so that one
// text can be read in several ways; all are followed at once, each step looking at few characters.
bool TailMatches(std::wstring_view text, bool after_time, bool groups) noexcept {
  Frontier times;  // behind a time or fraction: groups, fractions and zones may follow
  Frontier zones;  // behind a zone: only zones may follow
  (after_time ? times : zones).Add(0);
  bool group_here = groups;  // behind the date a group may follow, but no fraction
  for (;; text.remove_prefix(1)) {
    const bool time_here = times.IsHere();
    if (text.empty()) {
      return time_here || zones.IsHere();
    }
    const bool here = time_here || zones.IsHere();
    const wchar_t unit = text.front();
    if ((group_here || (groups && time_here)) && (unit == L' ' || unit == L',' || unit == L'T') &&
        Fits(text.substr(1), "dd:dd:dd")) {
      times.Add(kGroupSize);
    }
    if (time_here && Fits(text, ".ddd")) {
      times.Add(kFractionSize);
    }
    if (here && unit == L'Z') {
      zones.Add(kUtcZoneSize);
    }
    if (here && (unit == L'+' || unit == L'-') && Fits(text.substr(1), "dd.dd")) {
      zones.Add(kZoneSize);
    }
    group_here = false;
    times.Advance();
    zones.Advance();
    if (times.IsEmpty() && zones.IsEmpty()) {
      return false;
    }
  }
}

bool TakeDigits(std::wstring_view& text, std::string_view pattern) noexcept {
  const bool fits = Fits(text, pattern);
  if (fits) {
    text.remove_prefix(pattern.size());
  }
  return fits;
}

void SkipDash(std::wstring_view& text) noexcept {
  if (!text.empty() && text.front() == L'-') {
    text.remove_prefix(1);
  }
}

}  // namespace

bool Matches(std::wstring_view text) noexcept {
  if (text.size() < kShortestText) {
    return false;
  }
  if (text[2] == L':') {
    return Fits(text, "dd:dd:dd") && TailMatches(text.substr(kTimeSize), true, false);
  }
  if (!TakeDigits(text, "dddd")) {
    return false;
  }
  SkipDash(text);
  if (!TakeDigits(text, "dd")) {
    return false;
  }
  SkipDash(text);
  return TakeDigits(text, "dd") && TailMatches(text, false, true);
}

int ReadField(std::wstring_view text, std::size_t position, std::size_t length) {
  if (position > text.size()) {
    throw std::out_of_range("invalid string position");
  }
  std::wstring_view field = text.substr(position, length);
  while (!field.empty() && Ascii::IsSpace(field.front())) {
    field.remove_prefix(1);
  }
  bool negative = false;
  if (!field.empty() && (field.front() == L'+' || field.front() == L'-')) {
    negative = field.front() == L'-';
    field.remove_prefix(1);
  }
  int value = 0;
  for (; !field.empty() && Ascii::IsDigit(field.front()); field.remove_prefix(1)) {
    value = value * 10 + static_cast<int>(field.front() - L'0');
  }
  return negative ? -value : value;
}

}  // namespace Zelto::Utilities::Iso8601
