#include "fuzz/models/utf.h"
#include "zelto/text/string_utilities.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>
#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

std::wstring Units(std::initializer_list<std::uint32_t> values) {
  std::wstring text;
  for (const std::uint32_t value : values) {
    text.push_back(static_cast<wchar_t>(value));
  }
  return text;
}

template <typename Action>
bool IsBadConversion(const Action& action) {
  try {
    action();
    return false;
  } catch (const std::range_error& error) {
    return std::string(error.what()) == "bad conversion";
  }
}

bool RefusesUtf8(const std::string& bytes) {
  return IsBadConversion([&bytes] { StringUtilities::Utf8ToUtf16(bytes); });
}

bool RefusesUtf16(const std::wstring& units) {
  return IsBadConversion([&units] { StringUtilities::Utf16ToUtf8(units); });
}

TEST(UtfConversion, EveryCharacterConverts) {
  for (std::uint32_t value = 1; value <= 0x10FFFF; ++value) {
    if (value == 0xD800) {
      value = 0xE000;
    }
    const std::string bytes = Fuzz::EncodeUtf8({value});
    const std::wstring decoded = StringUtilities::Utf8ToUtf16(bytes);
    ASSERT_EQ(decoded, Units({value > 0xFFFF ? 0xE000 + (value & 0xFFF) : value})) << std::hex << value;
    const std::wstring units =
        value > 0xFFFF ? Units({0xD7C0 + (value >> 10), 0xDC00 + (value & 0x3FF)}) : Units({value});
    ASSERT_EQ(StringUtilities::Utf16ToUtf8(units), bytes) << std::hex << value;
  }
}

// Blocks of ASCII are converted by a shorter way, so what interrupts them must be found at every place.
TEST(UtfConversion, FindsOtherCharactersAtEveryPlace) {
  for (std::size_t length = 0; length < 70; ++length) {
    for (std::size_t place = 0; place <= length; ++place) {
      const std::wstring units = std::wstring(place, L'a') + L"\u20AC=\u00E9" + std::wstring(length - place, L'a');
      const std::string head(place, 'a');
      const std::string tail(length - place, 'a');
      const std::string bytes = head + "\xE2\x82\xAC=\xC3\xA9" + tail;
      ASSERT_EQ(StringUtilities::Utf8ToUtf16(bytes), units);
      ASSERT_EQ(StringUtilities::Utf16ToUtf8(units), bytes);
      ASSERT_TRUE(RefusesUtf8(head + "\xFF" + tail));
      ASSERT_EQ(StringUtilities::Utf8ToUtf16(head + '\0' + tail), std::wstring(place, L'a'));
      ASSERT_TRUE(RefusesUtf16(std::wstring(place, L'a') + static_cast<wchar_t>(0xDC00) + units));
    }
  }
}

// Long text is converted in parts of some hundred units: characters lie across every border between them.
TEST(UtfConversion, ConvertsLongTextOfEveryLengthOfCharacter) {
  for (const std::uint32_t value : {0x41U, 0xE9U, 0x20ACU, 0x1F600U}) {
    const bool pair = value > 0xFFFFU;
    const std::wstring encoded = pair ? Units({0xD83D, 0xDE00}) : Units({value});
    const std::wstring decoded = pair ? Units({0xE600}) : Units({value});
    for (std::size_t shift = 0; shift < 5; ++shift) {
      std::wstring source(shift, L'a');
      std::wstring result = source;
      std::string bytes(shift, 'a');
      for (std::size_t i = 0; i < 1100; ++i) {
        source += encoded;
        result += decoded;
        bytes += Fuzz::EncodeUtf8({value});
      }
      ASSERT_EQ(StringUtilities::Utf16ToUtf8(source), bytes);
      ASSERT_EQ(StringUtilities::Utf8ToUtf16(bytes), result);
      ASSERT_TRUE(RefusesUtf8(bytes + "\xE2\x82"));
      ASSERT_TRUE(RefusesUtf16(source + static_cast<wchar_t>(0xD83D)));
    }
  }
  // On Linux one unit each.
  std::string bytes;
  std::wstring characters;
  for (int i = 0; i < 1100; ++i) {
    bytes += "\xF0\x9F\x98\x80";
    characters += L"\U0001F600";
    ASSERT_EQ(StringUtilities::Utf16ToUtf8(characters), bytes);
  }
}

TEST(UtfConversion, RefusesEveryMalformedSequence) {
  std::istringstream malformed(
      "\x80 \xBF \xC0\x80 \xC1\xBF \xE0\x80\x80 \xE0\x9F\xBF \xF0\x80\x80\x80 \xF0\x8F\xBF\xBF "
      "\xED\xA0\x80 \xED\xBF\xBF \xED\xA0\xBD\xED\xB8\x80 \xF4\x90\x80\x80 \xF5\x80\x80\x80 "
      "\xF8\x88\x80\x80\x80 \xFE \xFF \xC3 \xC3\x28 \xE2\x82 \xE2\x28\xA1 \xE2\x82\x28 \xF0\x9F\x98 "
      "\xF0\x9F \xF0 \xF0\x9F\x28\x80 \xF0\x9F\x98\x28 \xC3\xC3\xA9 \xC3\xA9\xA9 ");
  for (std::string bytes; malformed >> bytes;) {
    EXPECT_TRUE(RefusesUtf8(bytes)) << testing::PrintToString(bytes);
    EXPECT_TRUE(RefusesUtf8("a plain text in front of it " + bytes));
    EXPECT_TRUE(RefusesUtf8(bytes + "a plain text behind it"));
  }
  // A view may end in the middle of a buffer that goes on with what would complete the sequence.
  const std::string whole = "\xE2\x82\xAC";
  EXPECT_TRUE(IsBadConversion([&whole] { StringUtilities::Utf8ToUtf16(std::string_view(whole).substr(0, 2)); }));
}

TEST(UtfConversion, RefusesLoneSurrogatesAndValuesBeyondUnicode) {
  EXPECT_TRUE(RefusesUtf16(Units({0xD83D})));
  EXPECT_TRUE(RefusesUtf16(Units({'a', 0xDE00})));
  EXPECT_TRUE(RefusesUtf16(Units({0xD83D, 'a'})));
  EXPECT_TRUE(RefusesUtf16(Units({0xDE00, 0xD83D})));
  EXPECT_TRUE(RefusesUtf16(Units({0xD83D, 0xD83D, 0xDE00})));
  EXPECT_TRUE(RefusesUtf16(Units({0xFFFFDC00, 0x11D800, 0xD800})));
  EXPECT_EQ(StringUtilities::Utf16ToUtf8(L"\U0001F600"), "\xF0\x9F\x98\x80");
}

TEST(UtfConversion, OnlyEncodingGoesAcrossZero) {
  EXPECT_EQ(StringUtilities::Utf16ToUtf8(std::wstring(L"a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(StringUtilities::Utf8ToUtf16(std::string("a\0\xFF", 3)), L"a");
  EXPECT_EQ(StringUtilities::ToAscii(std::wstring(L"a\0\u0100", 3)), "a");
}

TEST(UtfConversion, AsciiTakesUnitsOfOneByte) {
  std::wstring units;
  std::string bytes;
  for (unsigned value = 1; value < 0x100; ++value) {
    units.push_back(static_cast<wchar_t>(value));
    bytes.push_back(static_cast<char>(value));
  }
  EXPECT_EQ(StringUtilities::ToAscii(units), bytes);
  EXPECT_TRUE(IsBadConversion([] { StringUtilities::ToAscii(L"a\u0100"); }));
  EXPECT_TRUE(IsBadConversion([] { StringUtilities::ToAscii(L"\uFF41"); }));
}

}  // namespace
}  // namespace Zelto::Utilities
