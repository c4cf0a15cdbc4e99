// The system's codec and ours side by side.
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

std::wstring SystemEncode(const std::string& bytes) {
  const auto* data = reinterpret_cast<const BYTE*>(bytes.data());
  const auto size = static_cast<DWORD>(bytes.size());
  const DWORD flags = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
  DWORD length = 0;
  EXPECT_TRUE(CryptBinaryToStringW(data, size, flags, nullptr, &length));
  std::wstring text(length, L'\0');
  EXPECT_TRUE(CryptBinaryToStringW(data, size, flags, text.data(), &length));
  text.resize(length);
  return text;
}

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

TEST(Base64OfTheSystem, EncodesAlike) {
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    std::wstring text;
    for (std::size_t length = random() % 150 + 1; text.size() < length;) {
      text += L"aZ~\x01\u0080\u07FF\u0800\uFFFF"[random() % 8];
    }
    ASSERT_EQ(Base64::Encode(text), SystemEncode(StringUtilities::Utf16ToUtf8(text)));
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

TEST(Base64OfTheSystem, RefusedTextIsRefusedByUsToo) {
  for (const wchar_t* text : {L"YQ=", L"Y=Q=", L"YQ=a", L"YW-j", L"YW_j", L"YWJj!", L"Y\vQ==", L"Y\fQ==", L"YQ\u00A0==",
                              L"\u0141WJj", L"\uFF39WJj", L"YWJj\u0080", L"-----BEGIN-----"}) {
    EXPECT_EQ(SystemDecode(text), std::nullopt) << testing::PrintToString(std::wstring(text));
    EXPECT_EQ(Decode(text), std::nullopt) << testing::PrintToString(std::wstring(text));
  }
  // Wine's codec is more lenient than complete padding asks for: it completes what is missing (even a byte of a single
  // character) and reads nothing behind the first padded quantum. We refuse that, whatever the system does.
  for (const wchar_t* text : {L"Y", L"YQ", L"YWI", L"YWJjY", L"=", L"====", L"Y===", L"=YQ=", L"YQ===", L"YQ== =",
                              L"YQ==YQ==", L"YQ==\nYQ==", L"YWJj=", L"YWJj====", L"w6k=*"}) {
    EXPECT_EQ(Decode(text), std::nullopt) << testing::PrintToString(std::wstring(text));
  }
}

}  // namespace
}  // namespace Zelto::Utilities
