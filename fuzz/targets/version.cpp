// Version texts beside what `scanf` reads.
#include "zelto/time/version.h"

#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Utilities::Version;

using Parts = std::array<long long, 4>;

// What `scanf` reads where there are three dots. Numbers of 19 digits may be beyond what it counts in.
std::optional<Parts> Scan(const std::string& text) {
  Parts parts{};
  auto& [a, b, c, d] = parts;
  const bool has_number = std::sscanf(text.c_str(), "%lld.%lld.%lld.%lld", &a, &b, &c, &d) > 0;
  return has_number && std::count(text.begin(), text.end(), '.') == 3 ? std::optional(parts) : std::nullopt;
}

bool HasLongNumber(const std::string& text) {
  constexpr int kLong = 19;
  return std::search_n(text.begin(), text.end(), kLong, true,
                       [](char unit, bool digit) { return (unit >= '0' && unit <= '9') == digit; }) != text.end();
}

void Run(Bytes bytes) {
  const std::vector<wchar_t> units = LenientText(bytes);
  const std::string text = Narrow(View(units));
  const std::optional<Parts> expected = Scan(text);
  Version version(9, 8, 7, 6);
  try {
    version.SetVersion(View(units));
  } catch (const Utilities::Win32Exception& error) {
    Require(error.GetErrorCode() == 87 && !expected, "three dots behind a number are a version");
    Require(version == Version(9, 8, 7, 6), "a refused text changes nothing");
    return;
  }
  if (!HasLongNumber(text)) {
    Require(expected.has_value(), "three dots behind a number are a version");
    std::string printed;
    for (const long long part : *expected) {
      printed += std::to_string(static_cast<std::int32_t>(part)) + '.';
    }
    printed.pop_back();
    Require(version.ToCharString() == printed, "the parts are read in order, and written with a sign");
  }
  Require(Version(version.ToString()) == version, "what is written is read again");
  Require(Version(version.GetCVerison()) == version, "the plain structure holds the parts");
}

const Target target("version", Run);

}  // namespace
}  // namespace Zelto::Fuzz
