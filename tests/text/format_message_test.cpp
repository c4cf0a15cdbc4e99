#include "zelto/text/string_utilities.h"

#include <gtest/gtest.h>

#include <string>

namespace Zelto::Utilities {
namespace {

using SU = StringUtilities;

TEST(FormatMessage, InsertsByNumber) {
  EXPECT_EQ(SU::FormatMessageW(L"%2 before %1, %2", L"a", L"b"), L"b before a, b");
  EXPECT_EQ(SU::FormatMessageW(L"%1-%3", L"a", 7, L"c"), L"a-c");
  EXPECT_EQ(SU::FormatMessageW(L"%12%123", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, L"twelve"), L"twelvetwelve3");
  EXPECT_EQ(SU::FormatMessageW(L"%1", nullptr), L"(null)");
}

TEST(FormatMessage, TakesPrintfConversions) {
  EXPECT_EQ(SU::FormatMessageW(L"%1!d!|%2!05u!|%3!#x!|%4!-4d!|%5!I64u!", -1, 42, 255, 3, ~0ULL),
            L"-1|00042|0xff|3   |18446744073709551615");
  EXPECT_EQ(SU::FormatMessageW(L"%1!S!%2!hs!%3!.2s!%4!c!%5!C!%6!ls!", "a", "b", L"cde", L'f', 'g', L"h"), L"abcdfgh");
  EXPECT_EQ(SU::FormatMessageW(L"%1!d items!, %1!x!!", 10), L"10 items, a!");
}

TEST(FormatMessage, AStarShiftsTheNumbersBehindIt) {
  EXPECT_EQ(SU::FormatMessageW(L"%1!*.*s! %3 %4!*s!", 4, 2, L"Bill", L"Bob", 6, L"Bill"), L"  Bi Bob   Bill");
  EXPECT_EQ(SU::FormatMessageW(L"%1!*d!|%2!d!|%1!d!", 5, 42, 43), L"   42|43|42");
  EXPECT_EQ(SU::FormatMessageW(L"%2!d!,%1!*d!,%1!d!,%2!d!,%3!d!", 2, 3, 4, 5, 6), L"3, 4,2,4,5");
  EXPECT_EQ(SU::FormatMessageW(L"%1!.*s!|%2", 2, L"abc", L"x"), L"ab|x");
}

TEST(FormatMessage, EscapesAndLineBreaks) {
  EXPECT_EQ(SU::FormatMessageW(L"%%1 %n|%r|%t|%b|% %.%!%q"), L"%1 \r\n|\r|\t| | .!q");
  EXPECT_EQ(SU::FormatMessageW(L"a\nb\rc\r\nd"), L"a\r\nb\r\nc\r\nd");
  EXPECT_EQ(SU::FormatMessageW(L"ab%0cd"), L"ab");
  EXPECT_EQ(SU::FormatMessageW(L"%01"), L"");
  EXPECT_EQ(SU::FormatMessageW(L"ab%0%"), L"ab");
}

TEST(FormatMessage, ABadFormatGivesNothing) {
  void* const nowhere = reinterpret_cast<void*>(1);
  for (const wchar_t* format : {L"%1 %", L"%1 %2!d", L"%1 %2!", L"%1 %2!!", L"%1 %2!y!", L"%1 %2!f!", L"%1 %2!d%d!",
                                L"%1 %2!65536d!", L"%1 %2!.65536d!"}) {
    EXPECT_EQ(SU::FormatMessageW(format, nowhere, nowhere), L"") << testing::PrintToString(std::wstring(format));
  }
  EXPECT_EQ(SU::FormatMessageW(nullptr), L"");
  EXPECT_EQ(SU::FormatMessageW(L""), L"");
}

TEST(FormatMessage, HoldsAtMostWhatTheBufferHolds) {
  const std::wstring most(4095, L'x');
  EXPECT_EQ(SU::FormatMessageW(L"%1", most.c_str()), most);
  EXPECT_EQ(SU::FormatMessageW(L"%1.", most.c_str()), L"");
  EXPECT_EQ(SU::FormatMessageW(L"%1%0.", most.c_str()), most);
  EXPECT_EQ(SU::FormatMessageW(most.c_str()), most);
  EXPECT_EQ(SU::FormatMessageW((most + L"x").c_str()), L"");
  EXPECT_EQ(SU::FormatMessageW(L"%1!65535d!", 1), L"");
}

}  // namespace
}  // namespace Zelto::Utilities
