#include "zelto/text/base64.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

using testing::ThrowsMessage;

TEST(Base64, EncodesTheUtf8BytesInOneLine) {
  const struct {
    std::wstring text;
    std::wstring base64;
  } cases[] = {
      {L"", L""},
      {L"a", L"YQ=="},
      {L"fo", L"Zm8="},
      {L"foo", L"Zm9v"},
      {L"foobar", L"Zm9vYmFy"},
      {L"\u00E9", L"w6k="},
      {L"abc\u20AC", L"YWJj4oKs"},
      {L"ab\u00E9", L"YWLDqQ=="},
      {L"\U0001F600", L"8J+YgA=="},
      {std::wstring(L"a\0b", 3), L"YQBi"},
      {L"~~~???", L"fn5+Pz8/"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Base64::Encode(c.text), c.base64);
    EXPECT_EQ(Base64::Encode(std::wstring(96, L'a') + c.text), Base64::Encode(std::wstring(96, L'a')) + c.base64);
  }
  EXPECT_EQ(Base64::Encode(std::wstring(100'000, L'a')).size(), 133'336U);
}

TEST(Base64, DecodesWhatTheRulesLeaveOpen) {
  EXPECT_EQ(Base64::Decode(L""), L"");
  EXPECT_EQ(Base64::Decode(L" \t\r\n"), L"");
  EXPECT_EQ(Base64::Decode(L"YR=="), L"a");  // bits of no byte
  EXPECT_EQ(Base64::Decode(L"Y Q = = "), L"a");
  EXPECT_EQ(Base64::Decode(L"YQBi"), L"a");  // up to the zero byte
  EXPECT_EQ(Base64::Decode(L"YWJjAP//"), L"abc");
  EXPECT_EQ(Base64::Decode(L"77u/YQ=="), L"\uFEFFa");
}

TEST(Base64, RefusesEverythingElse) {
  for (const wchar_t* text :
       {L"Y",         L"YQ",        L"YQ=",        L"YWI",   L"YWJjY",          L"=",      L"==",       L"====",
        L"Y===",      L"=YQ=",      L"Y=Q=",       L"YQ=a",  L"YQ===",          L"YQ== =", L"YQ==YQ==", L"YQ==\nYQ==",
        L"YWJj=",     L"YWJj====",  L"YW-j",       L"YW_j",  L"YWJj!",          L"Y\vQ==", L"Y\fQ==",   L"YQ\u00A0==",
        L"\u0141WJj", L"\uFF39WJj", L"YWJj\u0080", L"w6k=*", L"-----BEGIN-----"}) {
    EXPECT_THAT([text] { Base64::Decode(text); }, ThrowsMessage<std::runtime_error>("Cannot decode base64 string"))
        << testing::PrintToString(std::wstring(text));
  }
  EXPECT_THROW(Base64::Decode(std::wstring(L"YQ==\0", 5)), std::runtime_error);
  EXPECT_THROW(Base64::Decode(std::wstring(1'000'001, L'A')), std::runtime_error);
}

TEST(Base64, TextThatCannotBeConvertedIsABadConversion) {
  EXPECT_THAT([] { Base64::Encode(L"abc\xD800"); }, ThrowsMessage<std::range_error>("bad conversion"));
  EXPECT_THAT([] { Base64::Decode(L"YWJj/w=="); }, ThrowsMessage<std::range_error>("bad conversion"));
  EXPECT_THAT([] { Base64::Decode(L"w6nD"); }, ThrowsMessage<std::range_error>("bad conversion"));
}

}  // namespace
}  // namespace Zelto::Utilities
