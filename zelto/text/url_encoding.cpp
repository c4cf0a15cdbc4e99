#include "zelto/text/url_encoding.h"

#include "zelto/text/bad_conversion.h"
#include "zelto/text/utf16_units.h"

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace Zelto::Utilities {
namespace {

constexpr std::wstring_view kUnsafe = L" <>\"#%{}|\\^~[]`";

constexpr std::array<std::wstring_view, 8> kReserved = {
    L"", L"", L"", L"/;?", L"/;?", L"/;?&", L"/;?&=", L"/;?&=",
};

constexpr std::size_t kEscapeLength = 3;
using Escape = std::array<wchar_t, kEscapeLength>;
constexpr std::array<Escape, 256> kEscapes = [] {
  constexpr std::wstring_view kDigits = L"0123456789ABCDEF";
  std::array<Escape, 256> escapes{};
  for (std::size_t byte = 0; byte < escapes.size(); ++byte) {
    escapes[byte] = {L'%', kDigits[byte >> 4], kDigits[byte & 0xF]};
  }
  return escapes;
}();

constexpr bool HasGraphic(wchar_t unit) {
  return unit >= 0x20 && unit < 0x7F;
}

// For each part, whether an ASCII unit goes into the result as it is.
using StaysTable = std::array<bool, 128>;
constexpr std::array<StaysTable, kReserved.size()> kStays = [] {
  std::array<StaysTable, kReserved.size()> stays{};
  for (std::size_t part = 0; part < stays.size(); ++part) {
    for (std::size_t i = 0; i < stays[part].size(); ++i) {
      const auto unit = static_cast<wchar_t>(i);
      stays[part][i] = HasGraphic(unit) && kUnsafe.find(unit) == std::wstring_view::npos &&
                       kReserved[part].find(unit) == std::wstring_view::npos;
    }
  }
  return stays;
}();

std::size_t IndexOf(UrlPart part) {
  const auto index = static_cast<std::size_t>(part);
  if (index >= kReserved.size()) {
    throw std::out_of_range("invalid map<K, T> key");
  }
  return index;
}

void AppendEscape(std::wstring& buffer, std::uint32_t byte) {
  buffer.append(kEscapes[byte].data(), kEscapeLength);
}

void AppendUnit(std::wstring& buffer, std::uint32_t unit) {
  if (unit < 0x80) {
    AppendEscape(buffer, unit);
    return;
  }
  if (unit < 0x800) {
    AppendEscape(buffer, 0xC0 | unit >> 6);
  } else {
    AppendEscape(buffer, 0xE0 | unit >> 12);
    AppendEscape(buffer, 0x80 | (unit >> 6 & 0x3F));
  }
  AppendEscape(buffer, 0x80 | (unit & 0x3F));
}

}  // namespace

UrlEncoding::~UrlEncoding() = default;

std::wstring UrlEncoding::Encode(std::wstring_view text, UrlPart part) {
  std::wstring result;
  if (text.empty()) {
    return result;
  }
  const StaysTable& stays = kStays[IndexOf(part)];
  result.reserve(text.size());
  const wchar_t* run = text.data();
  const wchar_t* const end = run + text.size();
  for (const wchar_t* at = run; at != end; ++at) {
    const std::uint32_t unit = ValueOf(*at);
    if (unit < stays.size() && stays[unit]) {
      continue;
    }
    result.append(run, at);
    EncodeToBuffer(result, *at);
    run = at + 1;
  }
  return result.append(run, end);
}

void UrlEncoding::EncodeToBuffer(std::wstring& buffer, wchar_t unit) {
  if (ValueOf(unit) > kMaximumCodePoint) {
    ThrowBadConversion();
  }
  ForEachUnit(unit, [&buffer](char16_t half) { AppendUnit(buffer, half); });
}

bool UrlEncoding::Rfc1738HasGraphic(wchar_t unit) {
  return HasGraphic(unit);
}

bool UrlEncoding::Rfc1738IsReserved(wchar_t unit, UrlPart part) {
  return kReserved[IndexOf(part)].find(unit) != std::wstring_view::npos;
}

bool UrlEncoding::Rfc1738IsUnsafe(wchar_t unit) {
  return kUnsafe.find(unit) != std::wstring_view::npos;
}

}  // namespace Zelto::Utilities
