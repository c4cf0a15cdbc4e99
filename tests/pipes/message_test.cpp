#include "tests/pipes/pipe_fixture.h"

namespace Zelto::Utilities {
namespace {

TEST(PipeMessages, OnTheWireAreBareBytesAndLeaveNothingToTheNext) {
  using namespace std::string_literals;
  const struct {
    Encoding encoding;
    std::string answer;
    std::wstring text;
  } cases[] = {
      {Encoding::Utf8, "\xE2\x82\xAC text", L"\u20AC text"},
      {Encoding::Utf8, "ab", L"ab"},
      {Encoding::Utf8, "a\0b"s, L"a"},  // cut at U+0000
      {Encoding::Utf16, "c\1d\1"s, L"\u0163\u0164"},
      {Encoding::Utf16, "e", L"e"},  // half a unit, completed by a zero
      {Encoding::Utf16, "a\0\0\0b\0"s, L"a"},
      {Encoding::Utf16, "", L""},
      {Encoding::Utf8, "", L""},
  };
  BareServerAndClient pair;
  for (const auto& test : cases) {
    pair.client->SetEncoding(test.encoding);
    for (const bool wait : {true, false}) {
      for (const std::wstring& request : {std::wstring(L"abc"), std::wstring()}) {
        pair.client->WriteMessage(request, wait).get();
        const auto received = Read(pair.server);
        EXPECT_EQ(received.code, Platform::kSuccess);
        EXPECT_EQ(received.text, request.empty() ? "" : test.encoding == Encoding::Utf16 ? "a\0b\0c\0"s : "abc"s);
      }
    }
    EXPECT_EQ(Write(pair.server, test.answer), Platform::kSuccess);
    EXPECT_EQ(pair.client->ReadMessage().get(), test.text);
  }
}

TEST(PipeMessages, AreReadInChunksOf4096CodeUnits) {
  BareServerAndClient pair;
  // A zero ends the text of its chunk alone: so it shows where chunks begin.
  std::string bytes(3 * 4096 + 10, 'x');
  bytes[100] = bytes[4096 + 200] = bytes[2 * 4096] = '\0';
  EXPECT_EQ(Write(pair.server, bytes), Platform::kSuccess);
  EXPECT_EQ(pair.client->ReadMessage().get(), std::wstring(100 + 200 + 10, L'x'));
  pair.client->SetEncoding(Encoding::Utf16);
  std::string wide;
  for (int i = 0; i < 5000; ++i) {
    wide += {'y', '\0'};
  }
  wide[2 * 4096 + 20] = '\0';
  EXPECT_EQ(Write(pair.server, wide), Platform::kSuccess);
  EXPECT_EQ(pair.client->ReadMessage().get(), std::wstring(4096 + 10, L'y'));
}

TEST(PipeMessages, ABadChunkCostsItsMessageOnly) {
  BareServerAndClient pair;
  const std::string filler(4095, 'x');
  const std::string bad[] = {"\xC3\x28", filler + "\xC3\xA9", "\xFF" + filler + filler + filler};
  for (const std::string& message : bad) {
    EXPECT_EQ(Write(pair.server, message), Platform::kSuccess);
    EXPECT_EQ(Write(pair.server, "next"), Platform::kSuccess);
    ExpectFailure([&] { pair.client->ReadMessage().get(); }, "bad conversion");
    EXPECT_EQ(pair.client->ReadMessage().get(), L"next");
  }
  ExpectFailure([&] { pair.client->WriteMessage(L"\xDC00").get(); }, "bad conversion");
  pair.client->WriteMessage(L"next").get();
  EXPECT_EQ(Read(pair.server).text, "next");
}

}  // namespace
}  // namespace Zelto::Utilities
