#include "zelto/text/string_utilities.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <locale>
#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

using testing::ElementsAre;
using testing::ThrowsMessage;
using SU = StringUtilities;

TEST(StringUtilities, TestsBothEnds) {
  EXPECT_TRUE(SU::StartsWith(L"abc", L""));
  EXPECT_TRUE(SU::StartsWith(L"abc", L"ab"));
  EXPECT_FALSE(SU::StartsWith(L"abc", L"Ab"));
  EXPECT_FALSE(SU::StartsWith(L"a", L"ab"));
  EXPECT_TRUE(SU::EndsWith(L"abc", L"bc"));
  EXPECT_TRUE(SU::EndsWith(L"", L""));
  EXPECT_FALSE(SU::EndsWith(L"", L"a"));
  EXPECT_FALSE(SU::EndsWith(L"abc", L"ab"));
}

TEST(StringUtilities, AddsAtEndUnlessThereOrOneUnitLonger) {
  const struct {
    const wchar_t* text;
    const wchar_t* suffix;
    const wchar_t* result;
  } cases[] = {{L"x.txt", L".txt", L"x.txt"},
               {L"x", L".txt", L"x.txt"},
               {L"a", L"", L"a"},
               {L"a", L"ab", L"a"},
               {L"", L"ab", L"ab"},
               {L"", L"a", L""},
               {L"", L"", L""},
               {L"a", L"bc", L"a"},
               {L"abab", L"ab", L"abab"},
               {L"abac", L"ab", L"abacab"},
               {L"a", L"abc", L"aabc"}};
  for (const auto& c : cases) {
    std::wstring text = c.text;
    SU::AddAtEndIfNotExists(text, c.suffix);
    EXPECT_EQ(text, c.result);
  }
}

TEST(StringUtilities, ReplacesOnceThroughTheText) {
  const struct {
    const wchar_t* text;
    const wchar_t* search;
    const wchar_t* replacement;
    const wchar_t* result;
  } cases[] = {{L"aaa", L"a", L"aa", L"aaaaaa"}, {L"aaa", L"aa", L"b", L"ba"}, {L"", L"a", L"b", L""},
               {L"abc", L"", L"b", L"abc"},      {L"abc", L"x", L"", L"abc"},  {L"abcab", L"ab", L"", L"c"}};
  for (const auto& c : cases) {
    std::wstring text = c.text;
    SU::Replace(text, c.search, c.replacement);
    EXPECT_EQ(text, c.result);
  }
  std::wstring text = L"abab";
  SU::Replace(text, std::wstring_view(text).substr(2), text);
  EXPECT_EQ(text, L"abababab") << "arguments that are part of the text";
}

// What the operation is defined as, one search from the beginning after the other.
std::wstring ReplaceUntilNone(std::wstring text, const std::wstring& search, const std::wstring& replacement) {
  for (std::size_t hit; (hit = text.find(search)) != std::wstring::npos;) {
    text.replace(hit, search.size(), replacement);
  }
  return text;
}

TEST(StringUtilities, ReplacesAllAlsoWhatReplacementsForm) {
  const struct {
    const wchar_t* search;
    const wchar_t* replacement;
  } rules[] = {{L"ab", L"b"},   {L"ab", L"ba"},  {L"aa", L"a"},   {L"aba", L"ab"}, {L"aab", L"ba"}, {L"ab", L""},
               {L"abb", L"ba"}, {L"aba", L"bb"}, {L"ab", L"bba"}, {L"a", L"bbb"},  {L"bab", L"a"},  {L"abab", L"b"}};
  for (const auto& rule : rules) {
    for (unsigned bits = 0; bits < 512; ++bits) {
      std::wstring text;
      for (unsigned i = 0; i < 9; ++i) {
        text.push_back((bits >> i & 1U) != 0 ? L'a' : L'b');
      }
      const std::wstring expected = ReplaceUntilNone(text, rule.search, rule.replacement);
      SU::ReplaceAll(text, rule.search, rule.replacement);
      ASSERT_EQ(text, expected);
    }
  }
}

TEST(StringUtilities, ReplaceAllRefusesWhatWouldNotEnd) {
  std::wstring text = L"xaby";
  EXPECT_THAT([&text] { SU::ReplaceAll(text, L"ab", L"xaby"); },
              ThrowsMessage<std::runtime_error>("Replace shouldn't contain the search string for replace all"));
  EXPECT_EQ(text, L"xaby");
  text = L"aab";
  EXPECT_THROW(SU::ReplaceAll(text, L"ab", L"bbaa"), std::length_error);
  EXPECT_EQ(text, L"aab");
  SU::ReplaceAll(text, L"", L"x");
  EXPECT_EQ(text, L"aab");
}

TEST(StringUtilities, ReplacesAtOneEnd) {
  std::wstring text = L"abcab";
  SU::ReplaceAtBegin(text, L"ab", L"xyz");
  EXPECT_EQ(text, L"xyzcab");
  SU::ReplaceAtBegin(text, L"ab", L"-");
  SU::ReplaceAtEnd(text, L"ab", L"");
  EXPECT_EQ(text, L"xyzc");
  SU::ReplaceAtEnd(text, L"xy", L"-");
  SU::ReplaceAtEnd(text, L"", L"-");
  SU::ReplaceAtEnd(text, L"longer", L"-");
  EXPECT_EQ(text, L"xyzc");
  EXPECT_THAT([&text] { SU::ReplaceAtEnd(text, L"xxyzc", L"-"); },
              ThrowsMessage<std::out_of_range>("invalid string position"));
  EXPECT_EQ(text, L"xyzc");
  text.clear();
  SU::ReplaceAtEnd(text, L"x", L"-");
  EXPECT_EQ(text, L"");
}

TEST(StringUtilities, TrimsGivenUnits) {
  std::wstring text = L"\r\n a b \n";
  SU::TrimLeft(text, L"\r\n ");
  EXPECT_EQ(text, L"a b \n");
  SU::TrimRight(text, L"\r\n ");
  EXPECT_EQ(text, L"a b");
  SU::Trim(text, L"ab");
  EXPECT_EQ(text, L" ");
  SU::Trim(text, L"");
  EXPECT_EQ(text, L" ");
  for (const auto trim : {SU::Trim, SU::TrimLeft, SU::TrimRight}) {
    std::wstring covered = L"xyx";
    trim(covered, L"yx");
    EXPECT_EQ(covered, L"");
  }
}

TEST(StringUtilities, MapsAsciiLettersOnly) {
  std::wstring text = L"@AZ[`az{\u00C9\u00E9\u0130\uFF21";
  SU::ToLower(text);
  EXPECT_EQ(text, L"@az[`az{\u00C9\u00E9\u0130\uFF21");
  SU::ToUpper(text);
  EXPECT_EQ(text, L"@AZ[`AZ{\u00C9\u00E9\u0130\uFF21");
  std::string bytes = "az{\xE9";
  SU::ToUpper(bytes);
  EXPECT_EQ(bytes, "AZ{\xE9");
}

struct Grouping : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\1"; }
};

TEST(StringUtilities, WritesEightDigitsUnderAnyLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  EXPECT_EQ(SU::ToHexStr(0), "0x00000000");
  EXPECT_EQ(SU::ToHexStr(255), "0x000000FF");
  EXPECT_EQ(SU::ToHexStr(-1), "0xFFFFFFFF");
  EXPECT_EQ(SU::ToHex(0x1234ABCD), L"0x1234ABCD");
  std::locale::global(before);
}

TEST(StringUtilities, CutsPartsOut) {
  EXPECT_EQ(SU::Left(L"abc", 2), L"ab");
  EXPECT_EQ(SU::Left(L"abc", 4), L"abc");
  EXPECT_EQ(SU::Mid(L"abc", 1), L"bc");
  EXPECT_EQ(SU::Mid(L"abc", 3), L"");
  EXPECT_THAT([] { SU::Mid(L"abc", 4); }, ThrowsMessage<std::out_of_range>("invalid string position"));

  EXPECT_THAT(SU::Split(L"", L","), ElementsAre(L""));
  EXPECT_THAT(SU::Split(L",a,,b,", L","), ElementsAre(L"", L"a", L"", L"b", L""));
  EXPECT_THAT(SU::Split(L"a::b:c", L"::"), ElementsAre(L"a", L"b:c"));
  EXPECT_THAT(SU::Split(L"a,b", L""), ElementsAre(L"a,b"));
}

TEST(StringUtilities, LendsABuffer) {
  std::wstring text = L"abc";
  wchar_t* buffer = SU::GetBuffer(text, 40);
  EXPECT_EQ(std::wstring(buffer, 40), L"abc" + std::wstring(37, L'\0'));
  buffer[3] = L'd';
  SU::ReleaseBuffer(text);
  EXPECT_EQ(text, L"abcd");
  SU::ReleaseBuffer(text);
  EXPECT_EQ(text, L"abcd");
  SU::GetBuffer(text, 2);
  EXPECT_EQ(text, L"ab");
}

TEST(StringUtilities, KnowsAsciiDigitsOnly) {
  EXPECT_TRUE(SU::VerifyContainsOnlyNumbers(L""));
  EXPECT_TRUE(SU::VerifyContainsOnlyNumbers(L"0123456789"));
  EXPECT_TRUE(SU::VerifyContainsOnlyHexNumbers(L""));
  EXPECT_TRUE(SU::VerifyContainsOnlyHexNumbers(L"09afAF"));
  for (const wchar_t* text : {L"/", L":", L"-1", L" 1", L"\uFF11", L"\u0661", L"1\U0001D7CE", L"g", L"G", L"@", L"`"}) {
    EXPECT_FALSE(SU::VerifyContainsOnlyNumbers(text));
    EXPECT_FALSE(SU::VerifyContainsOnlyHexNumbers(text));
  }
  EXPECT_FALSE(SU::VerifyContainsOnlyHexNumbers(L"0x1"));
}

}  // namespace
}  // namespace Zelto::Utilities
