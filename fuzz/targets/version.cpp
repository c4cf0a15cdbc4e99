// Version texts beside a reading of one field after the other.
#include "zelto/time/version.h"

#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Utilities::Version;

using Parts = std::array<std::uint32_t, 4>;

std::optional<Parts> Scan(const std::wstring& text) {
  if (std::count(text.begin(), text.end(), L'.') != 3) {
    return std::nullopt;
  }
  Parts parts{};
  std::size_t at = 0;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::size_t number = text.find_first_not_of(L" \t\n\v\f\r", at);
    if (number == std::wstring::npos) {
      break;
    }
    const bool sign = text[number] == L'+' || text[number] == L'-';
    const std::size_t digits = number + (sign ? 1 : 0);
    const std::size_t end = std::min(text.find_first_not_of(L"0123456789", digits), text.size());
    if (digits == end) {
      if (i == 0) {
        return std::nullopt;
      }
      break;
    }
    std::uint64_t value = 0;
    for (const wchar_t digit : text.substr(digits, end - digits)) {
      value = (value * 10 + static_cast<std::uint64_t>(digit - L'0')) % 0x100000000;
    }
    parts[i] = static_cast<std::uint32_t>(text[number] == L'-' ? 0x100000000 - value : value);
    if (end == text.size() || text[end] != L'.') {
      break;
    }
    at = end + 1;
  }
  return parts;
}

void Run(Bytes bytes) {
  const std::vector<wchar_t> units = LenientText(bytes);
  const std::optional<Parts> expected = Scan({units.begin(), units.end()});
  Version version(9, 8, 7, 6);
  try {
    version.SetVersion(View(units));
  } catch (const Utilities::Win32Exception& error) {
    Require(error.GetErrorCode() == 87 && !expected, "three dots behind a number are a version");
    Require(version == Version(9, 8, 7, 6), "a refused text changes nothing");
    return;
  }
  Require(expected && version == Version((*expected)[0], (*expected)[1], (*expected)[2], (*expected)[3]),
          "the parts are read in order");
  std::array<char, 64> printed{};
  std::snprintf(printed.data(), printed.size(), "%d.%d.%d.%d", static_cast<int>((*expected)[0]),
                static_cast<int>((*expected)[1]), static_cast<int>((*expected)[2]), static_cast<int>((*expected)[3]));
  Require(version.ToCharString() == printed.data(), "the parts are written with a sign");
  Require(Version(version.ToString()) == version, "what is written is read again");
  Require(Version(version.GetCVerison()) == version, "the plain structure holds the parts");
}

const Target target("version", Run);

}  // namespace
}  // namespace Zelto::Fuzz
