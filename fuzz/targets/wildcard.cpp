// Wildcard patterns beside the standard library's regular expressions. The input is the pattern, a zero byte, and the
// text. What is compared is short and has few stars: the standard library follows every way to match.
#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "fuzz/models/utf.h"
#include "zelto/text/wildcard_pattern.h"

#include <algorithm>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {
namespace {

constexpr std::size_t kLongestPattern = 80;
constexpr std::size_t kLongestText = 100;
constexpr std::ptrdiff_t kMostRepetitions = 4;

class Pattern : public Utilities::WildcardPattern {
 public:
  using WildcardPattern::ToRegexString;
  using WildcardPattern::WildcardPattern;
};

bool IsSound(std::wstring_view pattern) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == L'+' && (i == 0 || pattern[i - 1] == L'+' || pattern[i - 1] == L'*')) {
      return false;
    }
  }
  return true;
}

std::wstring Lower(std::wstring_view text) {
  std::wstring lower(text);
  for (wchar_t& unit : lower) {
    unit = unit >= L'A' && unit <= L'Z' ? unit - L'A' + L'a' : unit;
  }
  return lower;
}

void Run(Bytes bytes) {
  const auto length = static_cast<std::size_t>(std::find(bytes.begin(), bytes.end(), 0) - bytes.begin());
  const std::vector<wchar_t> pattern = LenientText(bytes.first(length));
  const std::vector<wchar_t> text = LenientText(bytes.subspan(std::min(length + 1, bytes.size())));
  // Units above U+FFFF count as their pairs; above U+10FFFF there are none.
  const std::optional<std::wstring> pattern_units = InUnits(View(pattern));
  const std::optional<std::wstring> text_units = InUnits(View(text));
  std::optional<Pattern> compiled;
  try {
    compiled.emplace(View(pattern));
    Require(pattern_units.has_value() && IsSound(View(pattern)), "a plus with nothing to repeat is refused");
  } catch (const std::regex_error& error) {
    Require(error.code() == std::regex_constants::error_badrepeat && !IsSound(View(pattern)), "other patterns are not");
    return;
  } catch (const std::range_error&) {
    Require(!pattern_units, "units of UTF-16 are accepted");
    return;
  }
  bool matches = false;
  try {
    matches = compiled->Match(View(text));
  } catch (const std::range_error&) {
    Require(!text_units, "units of UTF-16 are matched");
    return;
  }
  const auto repetitions =
      std::count(pattern.begin(), pattern.end(), L'*') + std::count(pattern.begin(), pattern.end(), L'+');
  if (!text_units || pattern_units->size() > kLongestPattern || text_units->size() > kLongestText ||
      repetitions > kMostRepetitions || text_units->find_first_of(L"\u2028\u2029") != std::wstring::npos) {
    return;  // the standard library knows no line ends above U+007F
  }
  const std::wregex expression(Pattern::ToRegexString(Lower(*pattern_units)));
  Require(matches == std::regex_match(Lower(*text_units), expression), "a pattern matches as its regular expression");
}

const Target target("wildcard", Run);

}  // namespace
}  // namespace Zelto::Fuzz
