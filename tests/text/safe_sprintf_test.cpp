#include "zelto/text/string_utilities.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace Zelto::Utilities {
namespace {

using SU = StringUtilities;

TEST(SafeSprintf, TextIsWideOrNarrowByItsLetterAndSize) {
  EXPECT_EQ(SU::SafeSprintf(L"%s %S %hs %hS %ls %lS %ws|", L"a", "b", "c", "d", L"e", L"f", L"g"), L"a b c d e f g|");
  EXPECT_EQ(SU::SafeSprintf(L"%c%C%hc%lc%lC", L'\u20AC', 'b', 'c', L'd', L'e'),
            L"\u20AC"
            L"bcde");
  EXPECT_EQ(SU::SafeSprintf(L"%S%C", "\xE9\x80", 0xE9), L"\u00E9\u0080\u00E9");
  EXPECT_EQ(SU::SafeSprintf(L"%6s|%-6s|%.2s|%06S|%3c|%-3C|", L"abc", L"abc", L"abc", "abc", L'x', 'y'),
            L"   abc|abc   |ab|000abc|  x|y  |");
  EXPECT_EQ(SU::SafeSprintf(L"%s|%S|%.3s|%8s", nullptr, nullptr, nullptr, nullptr), L"(null)|(null)|(nu|  (null)");
  EXPECT_EQ(SU::SafeSprintf(L"%.99999999999s", L"any"), L"any");
  const wchar_t unterminated[] = {L'a', L'b', L'c'};
  const char unterminated_bytes[] = {'a', 'b', 'c'};
  EXPECT_EQ(SU::SafeSprintf(L"%.3s%.*S", unterminated, 3, unterminated_bytes), L"abcabc");
}

TEST(SafeSprintf, CharactersAboveTheUnitsAreTheirPairs) {
  const std::wstring pair = {static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)};
  EXPECT_EQ(SU::SafeSprintf(L"\U0001F600%s|%4s|%.1s", L"\U0001F600", L"\U0001F600", L"\U0001F600"),
            pair + pair + L"|  " + pair + L"|" + pair[0]);
  if constexpr (sizeof(wchar_t) > 2) {  // beyond Unicode
    const std::wstring beyond(1, static_cast<wchar_t>(std::uint32_t{0x110000}));
    EXPECT_EQ(SU::SafeSprintf(beyond.c_str()), L"");
    EXPECT_EQ(SU::SafeSprintf(L"a%s", beyond.c_str()), L"");
    EXPECT_EQ(SU::FormatMessageW(beyond.c_str()), L"");
    EXPECT_EQ(SU::FormatMessageW((L"%" + beyond).c_str()), L"");
  }
}

TEST(SafeSprintf, IntegersHaveTheSizesOfWindows) {
  constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(SU::SafeSprintf(L"%d %i %u %o %x %X", -1, 2, 4000000000U, 8, 0xAB, 0xAB), L"-1 2 4000000000 10 ab AB");
  EXPECT_EQ(SU::SafeSprintf(L"%I64d %lld %jd", kLeast, kLeast, kLeast),
            L"-9223372036854775808 -9223372036854775808 -9223372036854775808");
  EXPECT_EQ(SU::SafeSprintf(L"%I64u %llu %I64x", ~0ULL, ~0ULL, ~0ULL),
            L"18446744073709551615 18446744073709551615 ffffffffffffffff");
  EXPECT_EQ(SU::SafeSprintf(L"%hd %hu %hhd %hhu %I32d %I32u", 70000, -1, 300, -1, -1, -1),
            L"4464 65535 44 255 -1 4294967295");
  EXPECT_EQ(SU::SafeSprintf(L"%ld %lu %lX|%d", -1L, 4294967295UL, -1L, 7), L"-1 4294967295 FFFFFFFF|7");
  EXPECT_EQ(SU::SafeSprintf(L"%ld %lX", std::int32_t{-5}, std::int32_t{-1}), L"-5 FFFFFFFF");
  EXPECT_EQ(
      SU::SafeSprintf(L"%zu %Iu %Id %td", ~std::size_t{0}, std::size_t{1}, std::ptrdiff_t{-1}, std::ptrdiff_t{-2}),
      L"18446744073709551615 1 -1 -2");
  EXPECT_EQ(SU::SafeSprintf(L"%p|%20p|%-18p|", reinterpret_cast<void*>(0x12ff), nullptr, nullptr),
            L"00000000000012FF|    0000000000000000|0000000000000000  |");
}

TEST(SafeSprintf, FlagsWidthsAndPrecisionsAreThoseOfPrintf) {
  EXPECT_EQ(SU::SafeSprintf(L"%+d|% d|%+u|%#x|%#X|%#o|%#x", 1, 1, 1, 255, 255, 8, 0), L"+1| 1|1|0xff|0XFF|010|0");
  EXPECT_EQ(SU::SafeSprintf(L"%05d|%-5d|%5d|%05d|%-05d|%#06x|", 42, 42, -42, -42, 42, 10),
            L"00042|42   |  -42|-0042|42   |0x000a|");
  EXPECT_EQ(SU::SafeSprintf(L"%.0d|%.d|%.3d|%6.3d|%06.3d|%#.0o|%.2x", 0, 0, -7, 7, 7, 0, 0xABC),
            L"||-007|   007|   007|0|abc");
  EXPECT_EQ(SU::SafeSprintf(L"%*d|%-*d|%*d|%.*d|%.*d|%*.*s", 4, 1, 4, 2, -4, 3, 3, 4, -1, 5, 4, 2, L"abc"),
            L"   1|2   |3   |004|5|  ab");
  EXPECT_EQ(SU::SafeSprintf(L"100%% %%d%%"), L"100% %d%");
}

TEST(SafeSprintf, RealsAreThoseOfPrintf) {
  EXPECT_EQ(SU::SafeSprintf(L"%f %F %e %E %g %G", 1.5, 1.5, 1.5, 1e-300, 1e-5, 123456789.0),
            L"1.500000 1.500000 1.500000e+00 1.000000E-300 1e-05 1.23457E+08");
  EXPECT_EQ(SU::SafeSprintf(L"%a %A %.1a %.0f %.0f %.1f", 1.5, 255.0, 1.99, 0.5, 1.5, 0.25),
            L"0x1.8000000000000p+0 0X1.FE00000000000P+7 0x2.0p+0 0 2 0.2");
  EXPECT_EQ(SU::SafeSprintf(L"%8.2f|%-8.2f|%08.2f|%+.1f|% .1f|%.*f", 3.14159, 3.14159, -3.14159, 2.0, 2.0, 3, 2.0),
            L"    3.14|3.14    |-0003.14|+2.0| 2.0|2.000");
  EXPECT_EQ(SU::SafeSprintf(L"%#.0f|%#.0e|%#g|%#.3g|%#g|%#.0g|%#.0a", 2.0, 2.0, 1.5, 1e-5, 0.0, 100.0, 1.0),
            L"2.|2.e+00|1.50000|1.00e-05|0.00000|1.e+02|0x1.p+0");
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(SU::SafeSprintf(L"%f|%F|%06f|%+e|%-5g|%A", infinity, -infinity, infinity, infinity, infinity, infinity),
            L"inf|-INF|   inf|+inf|inf  |INF");
  EXPECT_EQ(SU::SafeSprintf(L"%g %Lg %lf", std::numeric_limits<double>::quiet_NaN(), 0.25L, 1.0), L"nan 0.25 1.000000");
  EXPECT_EQ(SU::SafeSprintf(L"%.60000f", std::numeric_limits<double>::max()).size(), 60310U);
  EXPECT_EQ(SU::SafeSprintf(L"%.20f %d", 0.1, 5), L"0.10000000000000000555 5");
}

// Arguments of a format that is broken somewhere are not touched: the pointers here lead nowhere.
TEST(SafeSprintf, ABadFormatGivesNothing) {
  void* const nowhere = reinterpret_cast<void*>(1);
  for (const wchar_t* format :
       {L"%s %y",  L"%s %",     L"%s %5",    L"%s %-",      L"%s %.",       L"%s %ll",           L"%s %5%",
        L"%1$s",   L"%s %'d",   L"%s %b",    L"%s %hhs",    L"%s %Ld",      L"%s %hf",           L"%s %wd",
        L"%s %lp", L"%s %I64f", L"%s %I64s", L"%s %65536d", L"%s %.65536d", L"%s %99999999999d", L"%s %.65536f",
        L"%s %Z",  L"%s %!"}) {
    EXPECT_EQ(SU::SafeSprintf(format, nowhere, nowhere), L"") << testing::PrintToString(std::wstring(format));
  }
  EXPECT_EQ(SU::SafeSprintf(nullptr), L"");
  EXPECT_EQ(SU::SafeSprintf(L""), L"");
  EXPECT_EQ(SU::SafeSprintf(L"%s", L""), L"");
  EXPECT_EQ(SU::SafeSprintf(L"a%*db", std::numeric_limits<int>::min(), 1), L"");
  EXPECT_EQ(SU::SafeSprintf(L"a%.*db", 65536, 1), L"");
  EXPECT_EQ(SU::SafeSprintf(L"%65535d", 1).size(), 65535U);
}

TEST(SafeSprintf, WritesNowhereAndEndsAtZero) {
  int untouched = 7;
  EXPECT_EQ(SU::SafeSprintf(L"ab%nc%hn%d", &untouched, &untouched, 5), L"abc5");
  EXPECT_EQ(untouched, 7);
  EXPECT_EQ(SU::SafeSprintf(L"ab%cd", 0), L"ab");
}

TEST(SafeSprintf, TakesMoreArgumentsThanRegisters) {
  EXPECT_EQ(SU::SafeSprintf(L"%d%f%s%d%f%s%d%f%s%d%f%s%.0f%.0f%.0f%.0f%.0f%.0f%d", 1, 1.0, L"a", 2, 2.0, L"b", 3, 3.0,
                            L"c", 4, 4.0, L"d", 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, 11),
            L"11.000000a22.000000b33.000000c44.000000d567891011");
}

}  // namespace
}  // namespace Zelto::Utilities
