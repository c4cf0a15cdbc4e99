// The system's decoder beside ours. Wine's is more lenient than complete padding asks for (it completes what is
// missing, even a byte of a single character, and reads nothing behind the first padded quantum); we refuse that.
#include "zelto/text/base64.h"
#include "zelto/text/string_utilities.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <wincrypt.h>

#include <optional>
#include <random>
#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

std::optional<std::string> SystemDecode(const std::wstring& text) {
  const auto length = static_cast<DWORD>(text.size());
  DWORD size = 0;
  if (!CryptStringToBinaryW(text.c_str(), length, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr)) {
    return std::nullopt;
  }
  std::string bytes(size, '\0');
  if (!CryptStringToBinaryW(text.c_str(), length, CRYPT_STRING_BASE64, reinterpret_cast<BYTE*>(bytes.data()), &size,
                            nullptr, nullptr)) {
    return std::nullopt;
  }
  bytes.resize(size);
  return bytes;
}

std::optional<std::wstring> Decode(const std::wstring& text) {
  try {
    return Base64::Decode(text);
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

TEST(Base64OfTheSystem, DecodesWhatWeAcceptAlike) {
  std::mt19937 random(2);
  int accepted = 0;
  for (int round = 0; round < 3000; ++round) {
    // Letters that stand for ASCII bytes, so that few texts fail as UTF-8.
    std::wstring text;
    for (std::size_t quanta = random() % 4; quanta > 0; --quanta) {
      for (const wchar_t unit : {L'Y', L"WQ"[random() % 2], L'J', L"hjz"[random() % 3]}) {
        text.append(random() % 8 == 0, L" \t\r\n"[random() % 4]);
        text += unit;
      }
    }
    text += std::wstring(L"YW=*").substr(0, random() % 4) + std::wstring(random() % 3, L'=');
    const std::optional<std::wstring> ours = Decode(text);
    const std::optional<std::string> system = SystemDecode(text);
    if (ours) {
      ++accepted;
      ASSERT_TRUE(system.has_value()) << testing::PrintToString(text);
      ASSERT_EQ(*ours, StringUtilities::Utf8ToUtf16(*system)) << testing::PrintToString(text);
    }
  }
  EXPECT_GT(accepted, 500);
}

}  // namespace
}  // namespace Zelto::Utilities
