#include "zelto/text/wildcard_pattern.h"

#include "zelto/text/wildcard_matcher.h"

#include <string_view>

namespace Zelto::Utilities {
namespace {

constexpr std::wstring_view kEscaped = L"\\.(){}[]^$|";

}  // namespace

WildcardPattern::WildcardPattern(std::wstring_view pattern)
    : matcher_(std::make_shared<const WildcardMatcher>(ToRegexString(pattern))) {}

WildcardPattern::WildcardPattern(const WildcardPattern& other) = default;

WildcardPattern& WildcardPattern::operator=(const WildcardPattern& other) = default;

WildcardPattern::~WildcardPattern() = default;

bool WildcardPattern::Match(std::wstring_view text) const {
  return matcher_->Match(text);
}

std::wstring WildcardPattern::ToRegexString(std::wstring_view pattern) {
  std::wstring regex;
  regex.reserve(2 * pattern.size());
  for (const wchar_t unit : pattern) {
    if (kEscaped.find(unit) != std::wstring_view::npos) {
      regex += L'\\';
    }
    if (unit == L'?') {
      regex += L'.';
    } else if (unit == L'*') {
      regex += L".*";
    } else {
      regex += unit;
    }
  }
  return regex;
}

}  // namespace Zelto::Utilities
