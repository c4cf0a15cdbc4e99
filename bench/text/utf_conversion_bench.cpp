// The conversions between UTF-8 and UTF-16 beside ICU's and the standard library's. ICU writes its own 16-bit units and
// not wide text: on Linux it has half as much to read or write.
#include "bench/support/interleaved.h"
#include "bench/text/texts.h"
#include "zelto/text/string_utilities.h"

#include <unicode/ustring.h>

#include <codecvt>
#include <cstdint>
#include <locale>
#include <string>

namespace Zelto::Bench {
namespace {

using Utilities::StringUtilities;

std::u16string IcuDecode(const std::string& utf8) {
  std::u16string units(utf8.size(), u'\0');
  std::int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strFromUTF8(units.data(), static_cast<std::int32_t>(units.size()), &length, utf8.data(),
                static_cast<std::int32_t>(utf8.size()), &error);
  units.resize(static_cast<std::size_t>(length));
  return units;
}

std::string IcuEncode(const std::u16string& units) {
  std::string utf8(3 * units.size(), '\0');
  std::int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strToUTF8(utf8.data(), static_cast<std::int32_t>(utf8.size()), &length, units.data(),
              static_cast<std::int32_t>(units.size()), &error);
  utf8.resize(static_cast<std::size_t>(length));
  return utf8;
}

std::wstring StandardDecode(const std::string& utf8) {
  return std::wstring_convert<std::codecvt_utf8<wchar_t>>().from_bytes(utf8);
}

std::string StandardEncode(const std::wstring& units) {
  return std::wstring_convert<std::codecvt_utf8_utf16<wchar_t>>().to_bytes(units);
}

void Run(std::size_t size) {
  for (const SampleText& sample : SampleTexts(size)) {
    const std::u16string icu_units(sample.utf16.begin(), sample.utf16.end());
    const auto decode = [&] { Keep(StringUtilities::Utf8ToUtf16(sample.utf8)); };
    const auto encode = [&] { Keep(StringUtilities::Utf16ToUtf8(sample.utf16)); };
    const std::string name = std::string(sample.kind) + ", " + std::to_string(sample.utf8.size()) + " bytes";
    Print("to UTF-16, " + name, "ICU", CompareComputing(decode, [&] { Keep(IcuDecode(sample.utf8)); }));
    Print("to UTF-16, " + name, "std::wstring_convert",
          CompareComputing(decode, [&] { Keep(StandardDecode(sample.utf8)); }));
    Print("to UTF-8, " + name, "ICU", CompareComputing(encode, [&] { Keep(IcuEncode(icu_units)); }));
    Print("to UTF-8, " + name, "std::wstring_convert",
          CompareComputing(encode, [&] { Keep(StandardEncode(sample.utf16)); }));
  }
}

// Into a string that has room from the time before: without an allocation, which takes most of the time above.
void RunIntoTarget(std::size_t size) {
  for (const SampleText& sample : SampleTexts(size)) {
    std::wstring units;
    std::string bytes;
    const std::string name = std::string(sample.kind) + ", " + std::to_string(sample.utf8.size()) + " bytes, target";
    Print(("to UTF-16, " + name).c_str(), "std::wstring_convert",
          Compare([&] { StringUtilities::Utf8ToUtf16(sample.utf8, units), Keep(units); },
                  [&] { Keep(StandardDecode(sample.utf8)); }));
    Print(("to UTF-8, " + name).c_str(), "std::wstring_convert",
          Compare([&] { StringUtilities::Utf16ToUtf8(sample.utf16, bytes), Keep(bytes); },
                  [&] { Keep(StandardEncode(sample.utf16)); }));
  }
}

}  // namespace
}  // namespace Zelto::Bench

int main() {
  Zelto::Bench::Run(16);
  Zelto::Bench::RunIntoTarget(16);
  Zelto::Bench::Run(200);
  Zelto::Bench::Run(16384);
}
