// The system's codec beside ours. Wine's decoder is more lenient than complete padding asks for (it completes what is
// missing, even a byte of a single character, and reads nothing behind the first padded quantum); we refuse that.
#include "zelto/text/base64.h"
#include "zelto/text/string_utilities.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <wincrypt.h>

#include <random>
#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

std::wstring SystemEncode(const std::string& bytes) {
  const auto* data = reinterpret_cast<const BYTE*>(bytes.data());
  const auto length = static_cast<DWORD>(bytes.size());
  constexpr DWORD kForm = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
  DWORD size = 0;
  EXPECT_TRUE(CryptBinaryToStringW(data, length, kForm, nullptr, &size));
  std::wstring text(size, L'\0');
  EXPECT_TRUE(CryptBinaryToStringW(data, length, kForm, text.data(), &size));
  text.resize(size);
  return text;
}

std::string SystemDecode(const std::wstring& text) {
  const auto length = static_cast<DWORD>(text.size());
  DWORD size = 0;
  EXPECT_TRUE(CryptStringToBinaryW(text.c_str(), length, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr));
  std::string bytes(size, '\0');
  EXPECT_TRUE(CryptStringToBinaryW(text.c_str(), length, CRYPT_STRING_BASE64, reinterpret_cast<BYTE*>(bytes.data()),
                                   &size, nullptr, nullptr));
  bytes.resize(size);
  return bytes;
}

TEST(Base64OfTheSystem, EncodesAlike) {
  std::wstring text;
  for (int length = 1; length < 300; ++length) {
    text += L"az09\u00E9\u0416\u20AC\uFFFD"[length * 7 % 8];
    EXPECT_EQ(Base64::Encode(text), SystemEncode(StringUtilities::Utf16ToUtf8(text)));
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
    try {
      const std::wstring decoded = Base64::Decode(text);
      ++accepted;
      ASSERT_EQ(decoded, StringUtilities::Utf8ToUtf16(SystemDecode(text))) << testing::PrintToString(text);
    } catch (const std::runtime_error&) {
    }
  }
  EXPECT_GT(accepted, 500);
}

}  // namespace
}  // namespace Zelto::Utilities
