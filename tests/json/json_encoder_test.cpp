#include "zelto/json/json_encoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

using testing::ThrowsMessage;

TEST(JsonEncoder, EscapesMaskedAndNonPrintingCharacters) {
  const std::wstring all = L"\\\"\r\n\f\t\b/";
  EXPECT_EQ(JsonEncoder::ToEscapedString(all), L"\\\\\\\"\\r\\n\\f\\t\\b\\/");
  EXPECT_EQ(JsonEncoder::ToEscapedString(L"a\x0b\x0e\x0f\x10\x13\x14\x1f\x7f\u00e9"),
            L"a\\u000;\\u000>\\u000?\\u0010\\u0013\x14\x1f\x7f\u00e9");
  const std::wstring zero(1, L'\0');
  EXPECT_EQ(JsonEncoder::ToEscapedString(zero), L"\\u0000");
  EXPECT_EQ(JsonEncoder::ToEscapedString(L""), L"");
  int index = -1;
  for (std::size_t i = 0; i < all.size(); ++i) {
    std::size_t place = all.size();
    EXPECT_TRUE(JsonEncoder::IsMaskedCharacter(all[i], index) && JsonEncoder::IsMaskedCharacter(all[i], place));
    EXPECT_EQ(index, static_cast<int>(i));
    EXPECT_EQ(place, i);
  }
  EXPECT_FALSE(JsonEncoder::IsMaskedCharacter(L'\x01', index));
  EXPECT_FALSE(JsonEncoder::IsMaskedCharacter(L'r'));
  EXPECT_EQ(index, 7);
}

TEST(JsonEncoder, OnlyMaskedCharactersCallForEscaping) {
  const std::wstring control = L"\x01";
  EXPECT_FALSE(JsonEncoder::NeedsEscaping(control));
  EXPECT_EQ(JsonEncoder::ToEscapedString(control.c_str()), L"\\u0001");
  EXPECT_EQ(JsonEncoder::ToEscapedString(control), L"\\u0001");
  EXPECT_EQ(JsonEncoder::ToEscapedString(std::wstring(control)), control);
  EXPECT_EQ(JsonEncoder::ToEscapedString(control + L'/'), L"\\u0001\\/");
  EXPECT_EQ(JsonEncoder::CalculateOutputLength(L"abc"), 0);
  EXPECT_EQ(JsonEncoder::CalculateOutputLength(L"a/\x01"), 9);
}

TEST(JsonEncoder, EscapesUtf8) {
  EXPECT_EQ(JsonEncoder::ToEscapedUtf8String(L"\u00e9\n"), "\xc3\xa9\\n");
  EXPECT_EQ(JsonEncoder::ToEscapedUtf8String("\xc3\xa9/"), "\xc3\xa9\\/");
  EXPECT_THAT([] { JsonEncoder::ToEscapedUtf8String("\xff"); }, ThrowsMessage<std::range_error>("bad conversion"));
}

TEST(JsonEncoder, DecodesWhatStoulAccepts) {
  struct Case {
    std::wstring text;
    std::wstring decoded;
  };
  for (const Case& c : {Case{L"plain", L"plain"},
                        {L"\\\\\\\"\\r\\n\\f\\t\\b\\/", L"\\\"\r\n\f\t\b/"},
                        {L"\\u0041\\u00e9\\uFFFF", L"A\u00e9\xFFFF"},
                        {L"\\uD83D\\uDE00", {L'\xD83D', L'\xDE00'}},
                        {L"\\u-001", L"\xFFFF"},
                        {L"\\u-FFF", L"\xF001"},
                        {L"\\u+0041",
                         L"\x0004"
                         L"1"},
                        {L"\\u  41", L"A"},
                        {L"\\u\t\n\v9", L"\t"},
                        {L"\\u0x4A", L"J"},
                        {L"\\u0X4a", L"J"},
                        {L"\\u-0x1", L"\xFFFF"},
                        {L"\\u0xzz.", std::wstring(1, L'\0') + L"."},
                        {L"\\u41zz", L"A"},
                        {L"\\u4\"  x", L"\x04x"},
                        {L"\\u004", L"004"},
                        {L"\\u", L""},
                        {L"\\x\\'a\\", L"a"},
                        {L"\\u000;", std::wstring(1, L'\0')}}) {
    EXPECT_EQ(JsonEncoder::FromEscapedString(c.text), c.decoded) << c.text;
    EXPECT_EQ(JsonEncoder::FromEscapedString(std::wstring(c.text)), c.decoded) << c.text;
  }
  for (const wchar_t* text : {L"\\uzzzz", L"\\u    ", L"\\u-+12", L"\\u+  1", L"\\u\"\"\"\"", L"\\ux123"}) {
    EXPECT_THAT([text] { JsonEncoder::FromEscapedString(text); },
                ThrowsMessage<std::invalid_argument>("invalid stoul argument"))
        << text;
  }
}

TEST(JsonEncoder, DecodingUndoesEscaping) {
  std::wstring text;
  for (wchar_t c = 0x10; c < 0x500; ++c) {
    text.push_back(c);
  }
  text += L"\b\t\n\f\r\x01\x09";
  EXPECT_EQ(JsonEncoder::FromEscapedString(JsonEncoder::ToEscapedString(text)), text);
}

class OpenedEncoder : public JsonEncoder {
 public:
  using JsonEncoder::EncodeNonPrintCharacter;
  using JsonEncoder::VerifyOutputLength;
};

TEST(JsonEncoder, GuardsItsLengthCalculation) {
  EXPECT_NO_THROW(OpenedEncoder::VerifyOutputLength(2, 2));
  EXPECT_THAT([] { OpenedEncoder::VerifyOutputLength(3, 2); },
              ThrowsMessage<std::exception>("ToEscapedString: wrong length calculation."));
  std::wstring out(7, L'.');
  std::size_t pos = 1;
  OpenedEncoder::EncodeNonPrintCharacter(out, pos, L'\n');
  EXPECT_EQ(out, L".\\u000:");
  EXPECT_EQ(pos, 7U);
}

}  // namespace
}  // namespace Zelto::Utilities
