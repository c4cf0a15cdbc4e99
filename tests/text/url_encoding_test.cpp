#include "zelto/text/url_encoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

using testing::ThrowsMessage;

class Rules : public UrlEncoding {
 public:
  using UrlEncoding::EncodeToBuffer;
  using UrlEncoding::Rfc1738HasGraphic;
  using UrlEncoding::Rfc1738IsReserved;
  using UrlEncoding::Rfc1738IsUnsafe;
};

const std::wstring kStaysInEveryPart = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789$-_.+!*'(),:@";

std::wstring Escaped(unsigned byte) {
  const wchar_t digits[] = L"0123456789ABCDEF";
  return {L'%', digits[byte >> 4], digits[byte & 15]};
}

TEST(UrlEncoding, EachPartHasItsReservedUnits) {
  const std::wstring stays_too[] = {L"/;?&=", L"/;?&=", L"/;?&=", L"&=", L"&=", L"=", L"", L""};
  for (std::uint32_t part = 0; part < 8; ++part) {
    const std::wstring stays = kStaysInEveryPart + stays_too[part];
    for (wchar_t unit = 0; unit < 0x80; ++unit) {
      const bool stay = stays.find(unit) != std::wstring::npos;
      EXPECT_EQ(UrlEncoding::Encode(std::wstring(1, unit), UrlPart{part}),
                stay ? std::wstring(1, unit) : Escaped(static_cast<unsigned>(unit)))
          << "part " << part << ", unit " << static_cast<unsigned>(unit);
    }
  }
}

TEST(UrlEncoding, EncodesUnitByUnit) {
  const struct {
    std::wstring text;
    UrlPart part;
    std::wstring encoded;
  } cases[] = {
      {L"", UrlPart::Query, L""},
      {L"a b&c", UrlPart::Query, L"a%20b%26c"},
      {L"a b&c", UrlPart::Path, L"a%20b&c"},
      {L"~x~", UrlPart::Scheme, L"%7Ex%7E"},
      {L"caf\u00E9.txt", UrlPart::Scheme, L"caf%C3%A9.txt"},
      {L"\u0080\u07FF\u0800\uFFFF", UrlPart::Scheme, L"%C2%80%DF%BF%E0%A0%80%EF%BF%BF"},
      {L"\U0001F600", UrlPart::Scheme, L"%ED%A0%BD%ED%B8%80"},
      {L"\U0010FFFF", UrlPart::Scheme, L"%ED%AF%BF%ED%BF%BF"},
      {L"\xDC00"
       L"a",
       UrlPart::Scheme, L"%ED%B0%80a"},
      {std::wstring(2, L'\0'), UrlPart::Scheme, L"%00%00"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(UrlEncoding::Encode(c.text, c.part), c.encoded);
  }
}

TEST(UrlEncoding, UnknownPartIsRefusedOnlyWhenThereIsText) {
  for (const std::uint32_t part : {8U, 0xFFFFFFFFU}) {
    EXPECT_EQ(UrlEncoding::Encode(L"", UrlPart{part}), L"");
    EXPECT_THAT([part] { UrlEncoding::Encode(L"a", UrlPart{part}); },
                ThrowsMessage<std::out_of_range>("invalid map<K, T> key"));
    EXPECT_THAT([part] { Rules::Rfc1738IsReserved(L'a', UrlPart{part}); },
                ThrowsMessage<std::out_of_range>("invalid map<K, T> key"));
  }
}

TEST(UrlEncoding, HelpersServeDerivedClasses) {
  std::wstring buffer = L"x";
  Rules::EncodeToBuffer(buffer, L'a');
  Rules::EncodeToBuffer(buffer, L'\u20AC');
  EXPECT_EQ(buffer, L"x%61%E2%82%AC");

  EXPECT_TRUE(Rules::Rfc1738IsReserved(L'&', UrlPart::Query) && !Rules::Rfc1738IsReserved(L'=', UrlPart::Query));
  EXPECT_TRUE(Rules::Rfc1738IsUnsafe(L'`') && !Rules::Rfc1738IsUnsafe(L'\0'));
  for (const wchar_t unit : {L'\x1F', L'\x7F', L'\x80', L'\u2020'}) {
    EXPECT_FALSE(Rules::Rfc1738HasGraphic(unit));
  }
  EXPECT_TRUE(Rules::Rfc1738HasGraphic(L' ') && Rules::Rfc1738HasGraphic(L'~'));
}

TEST(UrlEncoding, UnitBeyondUnicodeIsABadConversion) {
  if constexpr (sizeof(wchar_t) > 2) {
    for (const std::uint32_t value : {0x110000U, 0xFFFFFFFFU}) {
      const std::wstring text(1, static_cast<wchar_t>(value));
      EXPECT_THAT([&text] { UrlEncoding::Encode(text, UrlPart::Path); },
                  ThrowsMessage<std::range_error>("bad conversion"));
    }
  }
}

}  // namespace
}  // namespace Zelto::Utilities
