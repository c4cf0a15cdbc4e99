#include "fuzz/models/utf.h"

#include <cstddef>

namespace Zelto::Fuzz {
namespace {

bool IsScalar(std::uint32_t value) {
  return value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
}

void AppendUtf8(std::uint32_t value, std::string& bytes) {
  const auto append = [&bytes](std::uint32_t byte) { bytes.push_back(static_cast<char>(byte)); };
  if (value < 0x80) {
    append(value);
  } else if (value < 0x800) {
    append(0xC0 + value / 0x40);
    append(0x80 + value % 0x40);
  } else if (value < 0x10000) {
    append(0xE0 + value / 0x1000);
    append(0x80 + value / 0x40 % 0x40);
    append(0x80 + value % 0x40);
  } else {
    append(0xF0 + value / 0x40000);
    append(0x80 + value / 0x1000 % 0x40);
    append(0x80 + value / 0x40 % 0x40);
    append(0x80 + value % 0x40);
  }
}

}  // namespace

std::optional<CodePoints> DecodeUtf8(std::string_view bytes) {
  CodePoints text;
  while (!bytes.empty()) {
    // What the first byte announces is read without a look at the rest; encoding it again must give the same bytes.
    const std::uint32_t first = static_cast<unsigned char>(bytes[0]);
    const std::size_t length = first < 0x80 ? 1 : (first < 0xE0 ? 2 : (first < 0xF0 ? 3 : 4));
    std::uint32_t value = length == 1 ? first : first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length && i < bytes.size(); ++i) {
      value = value * 0x40 + (static_cast<unsigned char>(bytes[i]) & 0x3FU);
    }
    std::string again;
    AppendUtf8(value, again);
    if (!IsScalar(value) || bytes.substr(0, length) != again) {
      return std::nullopt;
    }
    text.push_back(value);
    bytes.remove_prefix(length);
  }
  return text;
}

std::optional<CodePoints> DecodeUtf16(std::wstring_view units) {
  CodePoints text;
  for (std::size_t i = 0; i < units.size(); ++i) {
    auto value = static_cast<std::uint32_t>(units[i]);
    if (value >= 0xD800 && value < 0xDC00 && i + 1 < units.size()) {
      const auto low = static_cast<std::uint32_t>(units[i + 1]);
      if (low >= 0xDC00 && low < 0xE000) {
        value = 0x10000 + (value - 0xD800) * 0x400 + (low - 0xDC00);
        ++i;
      }
    }
    if (!IsScalar(value)) {
      return std::nullopt;
    }
    text.push_back(value);
  }
  return text;
}

std::string EncodeUtf8(const CodePoints& text) {
  std::string bytes;
  for (const std::uint32_t value : text) {
    AppendUtf8(value, bytes);
  }
  return bytes;
}

std::wstring OneUnitEach(const CodePoints& text) {
  std::wstring units;
  for (const std::uint32_t value : text) {
    units.push_back(static_cast<wchar_t>(value < 0x10000 ? value : 0xE000 + value % 0x1000));
  }
  return units;
}

std::optional<std::wstring> InUnits(std::wstring_view text) {
  std::wstring units;
  for (const wchar_t character : text) {
    const auto value = static_cast<std::uint32_t>(character);
    if (value > 0x10FFFF) {
      return std::nullopt;
    }
    if (value > 0xFFFF) {
      units += static_cast<wchar_t>(0xD7C0 + value / 0x400);
      units += static_cast<wchar_t>(0xDC00 + value % 0x400);
    } else {
      units += character;
    }
  }
  return units;
}

}  // namespace Zelto::Fuzz
