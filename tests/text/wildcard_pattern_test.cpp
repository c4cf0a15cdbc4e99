#include "zelto/text/wildcard_pattern.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

class Conversion : public WildcardPattern {
 public:
  using WildcardPattern::ToRegexString;
};

bool Match(const std::wstring& pattern, const std::wstring& text) {
  return WildcardPattern(pattern).Match(text);
}

TEST(WildcardPattern, MatchesTheWholeText) {
  const struct {
    const wchar_t* pattern;
    const wchar_t* text;
    bool matches;
  } cases[] = {
      {L"", L"", true},
      {L"", L"a", false},
      {L"*", L"", true},
      {L"?", L"", false},
      {L"*.TXT", L"readme.txt", true},
      {L"*.txt", L"README.TXT", true},
      {L"*.txt", L"readme.txt.exe", false},
      {L"*.txt", L"readmextxt", false},
      {L"file(1).doc", L"FILE(1).doc", true},
      {L"a?c", L"abc", true},
      {L"a?c", L"ac", false},
      {L"eadm", L"readme", false},
      {L"a*a", L"a", false},
      {L"a*b*c", L"a-b-b-c", true},
      {L"[x]^$|{2}\\", L"[X]^$|{2}\\", true},
      // Plus repeats what stands before it.
      {L"ab+c", L"abbBc", true},
      {L"ab+c", L"ac", false},
      {L"ab+c", L"ab+c", false},
      {L"a+a", L"a", false},
      {L"a+ab", L"aaab", true},
      {L"?+.c", L"x.c", true},
      {L"?+.c", L".c", false},
      {L"\\+", L"\\\\\\", true},
      {L"(+*", L"((x", true},
      // Nothing but itself matches a line end.
      {L"a?b", L"a\nb", false},
      {L"*", L"a\rb", false},
      {L"*", L"a\u2028b", false},
      {L"?", L"\u2029", false},
      {L"*\n*", L"ab\ncd", true},
      {L"*\n*", L"ab\n\ncd", false},
      {L"*\u2028+*", L"ab\u2028\u2028cd", true},
      {L"*", L"a\u0085\v\fb", true},
      // Only ASCII letters have a case.
      {L"stra\u00DFe*", L"STRA\u00DFE 1", true},
      {L"\u00E4\u0444", L"\u00E4\u0444", true},
      {L"\u00E4", L"\u00C4", false},
      {L"k", L"\u212A", false},
      {L"[", L"{", false},
      {L"@", L"`", false},
      // A surrogate pair is two units.
      {L"??", L"\U0001F600", true},
      {L"?", L"\U0001F600", false},
      {L"*\U0001F600.txt", L"x\xD83D\xDE00.txt", true},
      {L"\xD83D?", L"\U0001F600", true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Match(c.pattern, c.text), c.matches) << testing::PrintToString(std::wstring(c.pattern)) << " against "
                                                   << testing::PrintToString(std::wstring(c.text));
  }
  EXPECT_TRUE(Match(std::wstring(L"a\0*", 3), std::wstring(L"a\0\0b", 4)));
}

TEST(WildcardPattern, PlusNeedsSomethingToRepeat) {
  for (const wchar_t* pattern :
       {L"+", L"+a", L"++", L"a++", L"?++", L"*+", L"a*+", L"**+", L"a+*+", L"\\++", L"ab+c++d"}) {
    try {
      const WildcardPattern compiled(pattern);
      ADD_FAILURE() << testing::PrintToString(std::wstring(pattern)) << " was accepted";
    } catch (const std::regex_error& error) {
      EXPECT_EQ(error.code(), std::regex_constants::error_badrepeat);
    }
  }
  for (const wchar_t* pattern : {L"a+", L"?+", L"*?+", L"*a+", L"a+*", L"a+?", L"a+b+", L".+", L"$+", L"\n+", L"**"}) {
    EXPECT_NO_THROW(WildcardPattern{pattern}) << testing::PrintToString(std::wstring(pattern));
  }
}

TEST(WildcardPattern, ConvertsToARegularExpression) {
  const struct {
    const wchar_t* pattern;
    const wchar_t* regex;
  } cases[] = {
      {L"", L""},
      {L"*.txt", L".*\\.txt"},
      {L"a?c", L"a.c"},
      {L"?*+", L"..*+"},
      {L"\\.(){}[]^$|", L"\\\\\\.\\(\\)\\{\\}\\[\\]\\^\\$\\|"},
      {L"a-b,/\"<\u00E9", L"a-b,/\"<\u00E9"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Conversion::ToRegexString(c.pattern), c.regex);
  }
}

TEST(WildcardPattern, AgreesWithTheStandardRegexOnLongPatterns) {
  std::mt19937 random(2);
  int matches = 0;
  for (int round = 0; round < 300; ++round) {
    // A pattern made from a text that it matches, long enough for two words of states, sometimes three.
    std::wstring text;
    std::wstring pattern;
    int stars = 0;
    for (std::size_t length = 55 + random() % 90; text.size() < length;) {
      const wchar_t unit = L"abc\u0444"[random() % 4];
      const std::size_t count = random() % 3 + 1;
      const std::size_t kind = random() % 16;
      if (kind == 0 && stars < 2) {
        pattern += L'*';
        ++stars;
      } else if (kind < 4) {
        pattern += {unit, L'+'};
      } else {
        pattern.append(count, kind < 6 ? L'?' : unit);
      }
      text.append(count, unit);
    }
    const WildcardPattern compiled(pattern);
    ASSERT_TRUE(compiled.Match(text)) << testing::PrintToString(pattern) << testing::PrintToString(text);

    const std::wregex regex(Conversion::ToRegexString(pattern), std::regex_constants::icase);
    for (int i = 0; i < 5; ++i) {
      std::wstring changed = text;
      changed[random() % changed.size()] = L"abc\u0444\n"[random() % 5];
      const bool expected = std::regex_match(changed, regex);
      matches += expected;
      ASSERT_EQ(compiled.Match(changed), expected)
          << testing::PrintToString(pattern) << " against " << testing::PrintToString(changed);
    }
  }
  EXPECT_GT(matches, 100);
}

TEST(WildcardPattern, IsLinearInTheText) {
  constexpr std::size_t kMegabyte = 1'000'000;
  const std::wstring name(kMegabyte, L'a');
  EXPECT_FALSE(Match(L"*a*b*c*d*", name));
  EXPECT_TRUE(Match(L"*a*b*c*d*", name + L"bcd"));
  EXPECT_FALSE(Match(L"*a*a*a*a*a*a*a*a*b", name));
  EXPECT_FALSE(Match(L"a+a+a+a+a+a+a+a+b", name));
  EXPECT_TRUE(Match(L"*" + std::wstring(200, L'a'), name));
  EXPECT_FALSE(Match(L"*" + std::wstring(200, L'a') + L"b", name));
  EXPECT_TRUE(Match(name, name));
}

TEST(WildcardPattern, CopiesStandOnTheirOwn) {
  WildcardPattern copy(L"x");
  {
    const WildcardPattern original(L"*.txt");
    copy = original;
  }
  EXPECT_TRUE(copy.Match(L"a.txt"));
  WildcardPattern second(std::move(copy));
  copy = second;
  second = WildcardPattern(L"b");
  EXPECT_TRUE(copy.Match(L"a.txt") && second.Match(L"b") && !second.Match(L"a.txt"));
}

TEST(WildcardPattern, UnitBeyondUnicodeIsABadConversion) {
  if constexpr (sizeof(wchar_t) > 2) {
    const std::wstring text(1, static_cast<wchar_t>(std::uint32_t{0x110000}));
    EXPECT_THROW(Match(L"*", text), std::range_error);
    EXPECT_THROW(Match(text, L"a"), std::range_error);
  }
}

}  // namespace
}  // namespace Zelto::Utilities
