#include "tests/pipes/pipe_fixture.h"

namespace Zelto::Utilities {
namespace {

TEST(PipeMessages, ComeBackWholeInBothEncodings) {
  for (const Encoding encoding : {Encoding::Utf8, Encoding::Utf16}) {
    const EchoServer echo(UniquePipeName(), encoding, 1000);
    echo.Start();
    const auto client = OpenClient(echo.name, kLimitMs, encoding);
    // Around the chunks of the server (1000 code units) and of the client (4096), and far beyond.
    for (const std::size_t length : {1U, 998U, 999U, 1000U, 1001U, 2000U, 4093U, 4094U, 4095U, 8190U, 8192U, 300000U}) {
      std::wstring message(length, L'm');
      message.front() = L'<';
      message.back() = L'>';
      EXPECT_EQ(Ask(*client, message), L"0:" + message) << length;
    }
    EXPECT_EQ(Ask(*client, L"\u00E9\u20AC"), L"0:\u00E9\u20AC");
  }
}

TEST(PipeMessages, OnTheWireAreBareBytes) {
  using namespace std::string_literals;
  for (const Encoding encoding : {Encoding::Utf8, Encoding::Utf16}) {
    BareServerAndClient pair(kLimitMs, encoding);
    const bool wide = encoding == Encoding::Utf16;
    for (const bool wait : {true, false}) {
      pair.client->WriteMessage(L"abc", wait).get();
      EXPECT_EQ(pair.server.Read().second, wide ? "a\0b\0c\0"s : "abc"s);
    }
    pair.client->WriteMessage(L"").get();
    EXPECT_EQ(pair.server.Read(), std::pair(Platform::kSuccess, ""s));
    EXPECT_EQ(pair.server.Write(""), Platform::kSuccess);
    EXPECT_EQ(pair.client->ReadMessage().get(), L"");
    EXPECT_EQ(pair.server.Write(wide ? "a\0\0\0b\0"s : "a\0b"s), Platform::kSuccess);
    EXPECT_EQ(pair.client->ReadMessage().get(), L"a");  // cut at U+0000
  }
}

TEST(PipeMessages, AreReadInChunksOf4096CodeUnits) {
  BareServerAndClient pair;
  // A zero ends the text of its chunk alone: so it shows where chunks begin.
  std::string bytes(3 * 4096 + 10, 'x');
  bytes[100] = bytes[4096 + 200] = bytes[2 * 4096] = '\0';
  EXPECT_EQ(pair.server.Write(bytes), Platform::kSuccess);
  EXPECT_EQ(pair.client->ReadMessage().get(), std::wstring(100 + 200 + 10, L'x'));
  pair.client->SetEncoding(Encoding::Utf16);
  std::string wide;
  for (int i = 0; i < 5000; ++i) {
    wide += {'y', '\0'};
  }
  wide[2 * 4096 + 20] = '\0';
  EXPECT_EQ(pair.server.Write(wide), Platform::kSuccess);
  EXPECT_EQ(pair.client->ReadMessage().get(), std::wstring(4096 + 10, L'y'));
}

TEST(PipeMessages, LeaveNothingToTheNextOne) {
  using namespace std::string_literals;
  const EchoServer echo(UniquePipeName(), Encoding::Utf8, 100);
  echo.Start();
  const auto client = OpenClient(echo.name, kLimitMs);
  for (const std::size_t length : {250U, 99U, 5U, 1U}) {
    EXPECT_EQ(Ask(*client, std::wstring(length, L'm')), L"0:" + std::wstring(length, L'm'));
  }
  BareServerAndClient pair;
  const auto answer = [&pair](Encoding encoding, const std::string& bytes) {
    pair.client->SetEncoding(encoding);
    EXPECT_EQ(pair.server.Write(bytes), Platform::kSuccess);
    return pair.client->ReadMessage().get();
  };
  EXPECT_EQ(answer(Encoding::Utf8, "\xE2\x82\xAC text"), L"\u20AC text");
  EXPECT_EQ(answer(Encoding::Utf8, "ab"), L"ab");
  EXPECT_EQ(answer(Encoding::Utf16, "c\1d\1"s), L"\u0163\u0164");
  EXPECT_EQ(answer(Encoding::Utf16, "e"), L"e");  // half a unit, completed by a zero
  EXPECT_EQ(answer(Encoding::Utf8, ""), L"");
}

TEST(PipeMessages, ABadChunkCostsItsMessageOnly) {
  BareServerAndClient pair;
  const std::string filler(4095, 'x');
  const std::string bad[] = {"\xC3\x28", filler + "\xC3\xA9", "\xFF" + filler + filler + filler};
  for (const std::string& message : bad) {
    EXPECT_EQ(pair.server.Write(message), Platform::kSuccess);
    EXPECT_EQ(pair.server.Write("next"), Platform::kSuccess);
    ExpectFailure([&] { pair.client->ReadMessage().get(); }, "bad conversion");
    EXPECT_EQ(pair.client->ReadMessage().get(), L"next");
  }
  ExpectFailure([&] { pair.client->WriteMessage(L"\xDC00").get(); }, "bad conversion");
  pair.client->WriteMessage(L"next").get();
  EXPECT_EQ(pair.server.Read().second, "next");
}

}  // namespace
}  // namespace Zelto::Utilities
