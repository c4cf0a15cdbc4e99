// Percent-encoding beside a look at each unit. The first byte is the part of the address.
#include "zelto/text/url_encoding.h"

#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "fuzz/models/utf.h"

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Utilities::UrlEncoding;
using Utilities::UrlPart;

constexpr std::array<std::wstring_view, 8> kReserved{L"", L"", L"", L"/;?", L"/;?", L"/;?&", L"/;?&=", L"/;?&="};

std::wstring Escapes(std::uint32_t unit) {
  std::vector<std::uint32_t> bytes{unit};
  if (unit >= 0x800) {
    bytes = {0xE0 | unit >> 12, 0x80 | (unit >> 6 & 0x3F), 0x80 | (unit & 0x3F)};
  } else if (unit >= 0x80) {
    bytes = {0xC0 | unit >> 6, 0x80 | (unit & 0x3F)};
  }
  std::wstring text;
  for (const std::uint32_t byte : bytes) {
    std::array<char, 4> escape{};
    std::snprintf(escape.data(), escape.size(), "%%%02X", byte & 0xFF);
    text.append(escape.begin(), escape.end() - 1);
  }
  return text;
}

void Run(Bytes bytes) {
  Input input(bytes);
  const std::uint32_t part = input.Byte() & 0x0FU;
  const std::vector<wchar_t> text = LenientText(input.Rest());
  const std::optional<std::wstring> units = InUnits(View(text));
  std::wstring encoded;
  try {
    encoded = UrlEncoding::Encode(View(text), static_cast<UrlPart>(part));
  } catch (const std::out_of_range& error) {
    Require(part > 7 && !text.empty() && std::string(error.what()) == "invalid map<K, T> key", "eight parts are known");
    return;
  } catch (const std::range_error&) {
    Require(!units, "units of UTF-16 are encoded");
    return;
  }
  if (text.empty()) {
    Require(encoded.empty(), "an empty text stays empty");
    return;
  }
  Require(part <= 7 && units.has_value(), "other parts are refused");
  std::wstring expected;
  for (const wchar_t unit : *units) {
    const bool plain = unit >= 0x20 && unit < 0x7F &&
                       std::wstring_view(L" <>\"#%{}|\\^~[]`").find(unit) == std::wstring_view::npos &&
                       kReserved[part].find(unit) == std::wstring_view::npos;
    expected += plain ? std::wstring(1, unit) : Escapes(static_cast<std::uint32_t>(unit));
  }
  Require(encoded == expected, "each unit stands for itself or as its escapes");
}

const Target target("url_encoding", Run);

}  // namespace
}  // namespace Zelto::Fuzz
