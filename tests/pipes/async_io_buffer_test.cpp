#include "zelto/pipes/async_io_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

using Encoding = NamedPipeMessageEncoding;

std::string TransferBytes(const AsyncIOBuffer& buffer) {
  return {reinterpret_cast<const char*>(buffer.TransferData()), buffer.TransferSize()};
}

TEST(AsyncIOBuffer, LaysOutMessagesInTheirEncoding) {
  struct Case {
    Encoding encoding;
    std::wstring text;
    std::string bytes;
  };
  using namespace std::string_literals;
  const Case cases[] = {
      {Encoding::Utf8, L"abc", "abc"s},
      {Encoding::Utf16, L"abc", "a\0b\0c\0"s},
      {Encoding::Utf8, L"", ""s},
      {Encoding::Utf16, L"", ""s},
      {Encoding::Utf8, L"\u00E9\xD83D\xDE00", "\xC3\xA9\xF0\x9F\x98\x80"s},
      {Encoding::Utf16, L"\u20AC\xD83D\xDE00", "\xAC\x20\x3D\xD8\x00\xDE"s},
      {static_cast<Encoding>(7), L"a", "a\0"s},
  };
  for (const Case& expected : cases) {
    const AsyncIOBuffer buffer(expected.encoding, expected.text);
    EXPECT_EQ(TransferBytes(buffer), expected.bytes);
    // The zero unit at the end is there, but not transferred.
    EXPECT_EQ(buffer.TransferData()[buffer.TransferSize()], 0);
  }
  EXPECT_THROW(AsyncIOBuffer(Encoding::Utf8, L"\xD800"), std::range_error);
}

TEST(AsyncIOBuffer, GivesTextUpToTheFirstZeroUnit) {
  for (const Encoding encoding : {Encoding::Utf8, Encoding::Utf16}) {
    AsyncIOBuffer buffer(encoding, std::size_t{5});
    const std::size_t unit = encoding == Encoding::Utf8 ? 1 : 2;
    EXPECT_EQ(buffer.TransferSize(), 5 * unit);
    EXPECT_EQ(buffer.Text(), L"");
    const auto fill = [&buffer](std::wstring_view text, Encoding as) {
      const std::string bytes = TransferBytes(AsyncIOBuffer(as, text));
      std::copy(bytes.begin(), bytes.end(), buffer.TransferData());
    };
    fill(L"abcde", encoding);
    EXPECT_EQ(buffer.Text(), L"abcde");
    buffer.TransferData()[2 * unit] = 0;
    EXPECT_EQ(buffer.Text(), L"ab");
    EXPECT_EQ(buffer.Text(unit), L"a");
    // What an earlier chunk left behind the bytes of this one is not read, not even to complete a unit.
    fill(L"\u0161", Encoding::Utf16);
    EXPECT_EQ(buffer.Text(1), L"a");
    buffer.Clear();
    EXPECT_EQ(buffer.Text(), L"");
  }
}

}  // namespace
}  // namespace Zelto::Utilities
