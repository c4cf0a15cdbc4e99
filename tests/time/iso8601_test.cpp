#include "zelto/text/string_utilities.h"
#include "zelto/time/utc_time.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <string>
#include <vector>

namespace Zelto::Utilities {
namespace {

bool RegexMatches(const std::wstring& text) {
  static const std::wregex time(L"(\\d{2}):(\\d{2}):(\\d{2})(?:.\\d{3})*(?:(?:[+-]{1}\\d{2}.\\d{2})|(?:Z))*");
  static const std::wregex date_time(
      L"(\\d{4})-{0,1}(\\d{2})-{0,1}(\\d{2})(?:[ ,T]{1}(\\d{2}):(\\d{2}):(\\d{2})(?:.\\d{3})*)*"
      L"(?:(?:[+-]{1}\\d{2}.\\d{2})|(?:Z))*");
  return text.size() >= 4 && std::regex_match(text, text[2] == L':' ? time : date_time);
}

TEST(Iso8601, AcceptsTheLanguageOfTheRegularExpressions) {
  const std::vector<std::wstring> pieces = {L"2017", L"-",        L"11",     L"08",     L"T",         L" ",
                                            L",",    L"15:44:56", L".123",   L"+123",   L"-12345",    L"Z",
                                            L"Z123", L"+0100",    L"+01:00", L"-12x34", L"T12:34:56", L"\n123",
                                            L"\r",   L"1",        L"7",      L":",      L"T123"};
  std::mt19937 random(20171108);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  int matches = 0;
  for (int i = 0; i < 40'000; ++i) {
    std::wstring text = i % 3 == 0 ? L"15:44:56" : i % 3 == 1 ? L"2017-11-08" : L"20171108T15:44:56";
    for (std::size_t count = below(6); count != 0; --count) {
      text += pieces[below(pieces.size())];
    }
    if (i % 4 == 0) {
      text[below(text.size())] = L"0Z:T+-\n"[below(7)];
    }
    const bool expected = RegexMatches(text);
    matches += expected ? 1 : 0;
    ASSERT_EQ(UtcTime::IsISO8601DateTime(text), expected) << StringUtilities::Utf16ToUtf8(text);
  }
  EXPECT_GT(matches, 4'000);
}

TEST(Iso8601, TakesAsciiDigitsOnlyAndAnyUnitInFractionsAndZones) {
  EXPECT_FALSE(UtcTime::IsISO8601DateTime(L"\uFF12\uFF10\uFF11\uFF17-11-08"));
  EXPECT_TRUE(UtcTime::IsISO8601DateTime(L"2017-11-08T15:44:56\u00E9123+01\u20AC00"));
  EXPECT_TRUE(UtcTime::IsISO8601DateTime(L"15:44:56" + std::wstring(1, L'\0') + L"123"));
  EXPECT_FALSE(UtcTime::IsISO8601DateTime(L"15:"));
  for (const wchar_t* text : {L"15:44:56\u2028123", L"15:44:56+01\u202900", L"15:44:56\U0001F600123"}) {
    EXPECT_FALSE(UtcTime::IsISO8601DateTime(text)) << StringUtilities::Utf16ToUtf8(text);
  }
}

TEST(Iso8601, AnswersAboutAMillionCharactersAtOnce) {
  // A backtracking matcher overflows the stack or takes for ever here.
  std::wstring text = L"2017-11-08T15:44:56";
  while (text.size() < 1'000'000) {
    text += L"+12345+1234Z12";
  }
  EXPECT_FALSE(UtcTime::IsISO8601DateTime(text + L"x"));
  std::wstring good = L"15:44:56" + std::wstring(1'000'000, L'1');
  EXPECT_TRUE(UtcTime::IsISO8601DateTime(good));
  EXPECT_FALSE(UtcTime::IsISO8601DateTime(good + L"1"));
}

}  // namespace
}  // namespace Zelto::Utilities
