#include "fuzz/input.h"

#include <algorithm>

namespace Zelto::Fuzz {
namespace {

// The length of a sequence by its first byte; 1 where none begins.
std::size_t SequenceLength(std::uint8_t first) {
  if (first < 0xC0 || first >= 0xF8) {
    return 1;
  }
  return first < 0xE0 ? 2 : (first < 0xF0 ? 3 : 4);
}

}  // namespace

std::uint8_t Input::Byte() {
  const Bytes byte = Take(1);
  return byte.empty() ? std::uint8_t{0} : byte.front();
}

std::uint16_t Input::Unit() {
  const std::uint16_t low = Byte();
  return static_cast<std::uint16_t>(low | Byte() << 8);
}

std::uint32_t Input::Number() {
  const std::uint32_t low = Unit();
  return low | static_cast<std::uint32_t>(Unit()) << 16;
}

Bytes Input::Take(std::size_t count) {
  const Bytes taken = rest_.first(std::min(count, rest_.size()));
  rest_ = rest_.subspan(taken.size());
  return taken;
}

std::vector<wchar_t> LenientText(Bytes bytes) {
  std::vector<wchar_t> text;
  while (!bytes.empty()) {
    const std::size_t length = SequenceLength(bytes[0]);
    const Bytes tail = bytes.subspan(1, std::min(length, bytes.size()) - 1);
    const bool whole = tail.size() == length - 1 &&
                       std::all_of(tail.begin(), tail.end(), [](std::uint8_t byte) { return (byte & 0xC0) == 0x80; });
    if (length == 1 || !whole) {
      text.push_back(static_cast<wchar_t>(bytes[0]));
      bytes = bytes.subspan(1);
      continue;
    }
    std::uint32_t value = bytes[0] & (0x7FU >> length);
    for (const std::uint8_t byte : tail) {
      value = value << 6 | (byte & 0x3FU);
    }
    if (value > 0xFFFF && sizeof(wchar_t) == 2) {
      text.push_back(static_cast<wchar_t>(0xD800 + ((value - 0x10000) >> 10 & 0x3FF)));
      value = 0xDC00 + (value & 0x3FF);
    }
    text.push_back(static_cast<wchar_t>(value));
    bytes = bytes.subspan(length);
  }
  text.shrink_to_fit();
  return text;
}

std::vector<wchar_t> Units(Bytes bytes) {
  std::vector<wchar_t> text;
  text.reserve(bytes.size() / 2);
  for (Input input(bytes.first(bytes.size() / 2 * 2)); !input.IsEmpty();) {
    text.push_back(static_cast<wchar_t>(input.Unit()));
  }
  return text;
}

}  // namespace Zelto::Fuzz
