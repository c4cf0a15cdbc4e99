/// @file
/// Reading a fuzzer's bytes as arguments.
#pragma once

#include "fuzz/fuzz_target.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {

/// Takes bytes from the front. At the end all numbers are 0.
class Input {
 public:
  explicit Input(Bytes bytes) : rest_(bytes) {}

  bool IsEmpty() const { return rest_.empty(); }
  std::uint8_t Byte();
  /// Two bytes, the low one first.
  std::uint16_t Unit();
  /// Four bytes, the lowest first.
  std::uint32_t Number();
  /// At most so many bytes; the rest when there are fewer.
  Bytes Take(std::size_t count);
  Bytes Rest() { return Take(rest_.size()); }

 private:
  Bytes rest_;
};

/// Text in UTF-8, so that corpus and dictionaries can be read; what is not well-formed stands for itself: encoded
/// surrogates are surrogates, characters up to 0x1FFFFF are units where a `wchar_t` holds them and surrogates
/// otherwise, and any other byte is the unit of its value. The memory ends with the text.
std::vector<wchar_t> LenientText(Bytes bytes);

/// UTF-16, the low byte first. The memory ends with the text.
std::vector<wchar_t> Units(Bytes bytes);

/// The text for the C library: what is no ASCII, or a zero, is a question mark.
inline std::string Narrow(std::wstring_view text) {
  std::string narrow;
  for (const wchar_t unit : text) {
    narrow += unit > 0 && unit < 0x7F ? static_cast<char>(unit) : '?';
  }
  return narrow;
}

inline std::wstring_view View(const std::vector<wchar_t>& text) {
  return {text.data(), text.size()};
}

}  // namespace Zelto::Fuzz
