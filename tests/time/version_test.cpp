#include "zelto/time/version.h"

#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <type_traits>

namespace Zelto::Utilities {
namespace {

using testing::HasSubstr;
using testing::Property;

static_assert(std::has_virtual_destructor_v<Version>);

auto Fails(const std::string& text) {
  return testing::Throws<Win32Exception>(
      AllOf(Property(&Win32Exception::what, HasSubstr(text)), Property(&Win32Exception::GetErrorCode, 87U)));
}

TEST(Version, ScansLenientlyAfterThreeDots) {
  const auto expect = [](const wchar_t* text, const Version& version) {
    EXPECT_EQ(Version(text), version) << StringUtilities::Utf16ToUtf8(text);
    EXPECT_EQ(Version(StringUtilities::Utf16ToUtf8(text)), version);
  };
  expect(L"7...", {7, 0, 0, 0});
  expect(L"1.2..4", {1, 2, 0, 0});
  expect(L"1.2.3.4 beta", {1, 2, 3, 4});
  expect(L"1x.2.3.4", {1, 0, 0, 0});
  expect(L" \t\n1. 2.\r3.\v4", {1, 2, 3, 4});
  expect(L"+1.-2.3.- 4", {1, 4294967294, 3, 0});
  expect(L"4294967295.4294967296.4294967297.99999999999999999999", {4294967295, 0, 1, 1661992959});
  expect(L"-4294967295.0x10.3.4", {1, 0, 0, 0});
  EXPECT_EQ(Version(std::wstring_view(L"1.2\0.3.4", 8)), Version(1, 2, 0, 0));
}

TEST(Version, RefusesOtherTextsAndStaysAsItWas) {
  Version version(9, 8, 7, 6);
  for (const wchar_t* text : {L"", L"1.2.3", L"1.2.3.4.5", L"7....", L".1.2.3", L"...", L"x.1.2.3", L"-.1.2.3",
                              L"\uFF11.2.3.4", L"\u00A01.2.3.4"}) {
    EXPECT_THAT([&] { version.SetVersion(text); }, Fails("String is not a valid version string"))
        << StringUtilities::Utf16ToUtf8(text);
  }
  EXPECT_EQ(version, Version(9, 8, 7, 6));
  version.SetVersion(1, 2, 3, 4);
  EXPECT_EQ(version, Version(1, 2, 3, 4));
  EXPECT_NO_THROW(Version::CheckCompleteVersionFormat(L"a.b.c.d"));
  EXPECT_THAT([] { Version::CheckCompleteVersionFormat(L"1,2,3,4"); }, Fails(""));
}

TEST(Version, OrdersByPartsAsUnsignedNumbers) {
  const Version ascending[] = {{}, {0, 0, 0, 1}, {1, 2, 3, 3}, {1, 2, 3, 4}, {1, 2, 10, 0}, {2147483648, 0, 0, 0}};
  for (const Version& a : ascending) {
    for (const Version& b : ascending) {
      const int order = &a < &b ? -1 : &a > &b ? 1 : 0;
      EXPECT_EQ(a.Compare(b), order);
      EXPECT_TRUE((a < b) == (order < 0) && (a <= b) == (order <= 0) && (a > b) == (order > 0) &&
                  (a >= b) == (order >= 0) && (a == b) == (order == 0) && (a != b) == (order != 0));
    }
  }
}

TEST(Version, ExchangesAStructureInReverseOrder) {
  EXPECT_EQ(offsetof(_CVersion, revision), 0U);
  EXPECT_EQ(offsetof(_CVersion, major), 12U);
  const _CVersion plain = Version(1, 2, 3, 4).GetCVerison();
  EXPECT_TRUE(plain.major == 1 && plain.minor == 2 && plain.build == 3 && plain.revision == 4);
  EXPECT_EQ(Version(plain), Version(1, 2, 3, 4));
}

TEST(Version, PrintsSignedByDefaultAndByTheCallersFormat) {
  const Version version(1, 2147483648, 3, 4294967295);
  EXPECT_EQ(Version().ToString(), L"0.0.0.0");
  EXPECT_EQ(version.ToString(), L"1.-2147483648.3.-1");
  EXPECT_EQ(version.ToCharString(), "1.-2147483648.3.-1");
  EXPECT_EQ(version.ToString(L"%u.%lu"), L"1.2147483648");
  EXPECT_EQ(version.ToString(L"v%04x-%-12.10u|%+d%%%#X\u00E9"), L"v0001-2147483648  |+3%0XFFFFFFFF\u00E9");
  EXPECT_EQ(version.ToString(L"none%.d"), L"none1");
  EXPECT_EQ(version.ToString(L"%d\U0001F600"), L"1\xD83D\xDE00");
  for (const wchar_t* format : {L"", L"%s", L"%n", L"%", L"%5", L"%*d", L"%ll", L"%lld", L"%f", L"%-%", L"%d%d%d%d%d",
                                L"%300d", L"%99999999999d"}) {
    EXPECT_THAT([&] { version.ToString(format); }, Fails("Can't generate a valid version string"))
        << StringUtilities::Utf16ToUtf8(format);
  }
  EXPECT_THAT([&] { version.ToString(nullptr); }, Fails(""));
}

}  // namespace
}  // namespace Zelto::Utilities
