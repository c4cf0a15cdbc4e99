#include "zelto/text/bad_conversion.h"
#include "zelto/text/conversion_parts.h"
#include "zelto/text/string_utilities.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace Zelto::Utilities {
namespace {

// What a text of at most `kSize` units is converted into. A unit gives at most three bytes, or four when it stands for
// a pair or is the first of one.
template <std::size_t kSize>
using ByteBuffer = std::array<char, 4 * kSize>;

constexpr bool TakesThreeBytes(std::uint32_t value) noexcept {
  return value > 0x7FFU && value <= 0xFFFFU && !IsSurrogate(value);
}

inline char* PutFourBytes(std::uint32_t character, char* to) noexcept {
  to[0] = static_cast<char>(0xF0U | character >> 18);
  to[1] = static_cast<char>(0x80U | (character >> 12 & 0x3FU));
  to[2] = static_cast<char>(0x80U | (character >> 6 & 0x3FU));
  to[3] = static_cast<char>(0x80U | (character & 0x3FU));
  return to + 4;
}

// Narrows whole blocks as long as they are ASCII, and returns the number of units. A block that is not may have been
// written too.
template <std::size_t kSize>
std::size_t NarrowAsciiBlocks(std::wstring_view units, char* to) noexcept {
  const wchar_t* const at = units.data();
  std::size_t count = 0;
  for (; units.size() - count >= kSize; count += kSize) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < kSize; ++i) {
      bits |= ValueOf(at[count + i]);
      to[count + i] = static_cast<char>(at[count + i]);
    }
    if (bits > 0x7FU) {
      break;
    }
  }
  return count;
}

// Where a conversion has come to.
struct Encoded {
  const wchar_t* at;
  std::size_t bytes;
};

// Encodes from `at` on until `stop` is reached or passed; the text goes on to `end`.
template <std::size_t kSize>
Encoded EncodePart(const wchar_t* at, const wchar_t* stop, const wchar_t* end, ByteBuffer<kSize>& bytes) {
  char* to = bytes.data();
  const auto encoded = [&] { return Encoded{at, static_cast<std::size_t>(to - bytes.data())}; };
  constexpr std::size_t kAtOnce = kSize == kShort ? kStep : kBlock;
  const std::size_t ascii = NarrowAsciiBlocks<kAtOnce>({at, static_cast<std::size_t>(stop - at)}, to);
  at += ascii;
  to += ascii;
  while (at < stop) {
    std::uint32_t value = ValueOf(*at);
    // Characters of one length mostly stand together.
    while (value <= 0x7FU) {
      *to++ = static_cast<char>(value);
      if (++at == stop) {
        return encoded();
      }
      value = ValueOf(*at);
    }
    while (TakesThreeBytes(value)) {
      to[0] = static_cast<char>(0xE0U | value >> 12);
      to[1] = static_cast<char>(0x80U | (value >> 6 & 0x3FU));
      to[2] = static_cast<char>(0x80U | (value & 0x3FU));
      to += 3;
      if (++at == stop) {
        return encoded();
      }
      value = ValueOf(*at);
    }
    if (value > 0x7FFU) {
      if (IsHighSurrogate(value) && end - at >= 2 && IsLowSurrogate(ValueOf(at[1]))) [[likely]] {
        to = PutFourBytes(0x10000U + ((value & 0x3FFU) << 10) + (ValueOf(at[1]) & 0x3FFU), to);
        at += 2;
      } else if (value > 0xFFFFU && value <= kMaximumCodePoint) {
        to = PutFourBytes(value, to);
        ++at;
      } else {
        ThrowBadConversion();
      }
    } else if (value > 0x7FU) {
      to[0] = static_cast<char>(0xC0U | value >> 6);
      to[1] = static_cast<char>(0x80U | (value & 0x3FU));
      to += 2;
      ++at;
    }
  }
  return encoded();
}

// Encodes a short text; returns the number of bytes.
std::size_t EncodeShort(std::wstring_view text, ByteBuffer<kShort>& bytes) {
  const wchar_t* const end = text.data() + text.size();
  return EncodePart<kShort>(text.data(), end, end, bytes).bytes;
}

std::string EncodeLong(std::wstring_view text) {
  ByteBuffer<kPart> bytes;
  std::string result;
  const wchar_t* at = text.data();
  const wchar_t* const end = at + text.size();
  while (at != end) {
    const wchar_t* const stop = at + std::min(kPart, static_cast<std::size_t>(end - at));
    const Encoded encoded = EncodePart<kPart>(at, stop, end, bytes);
    at = encoded.at;
    if (result.empty()) {
      // The first part tells how much the others may need.
      result.reserve(at == end ? encoded.bytes : encoded.bytes * (text.size() / kPart + 1));
    }
    result.append(bytes.data(), encoded.bytes);
  }
  return result;
}

}  // namespace

std::string StringUtilities::Utf16ToUtf8(std::wstring_view text) {
  if (text.size() > kShort) {
    return EncodeLong(text);
  }
  ByteBuffer<kShort> bytes;
  const std::size_t size = EncodeShort(text, bytes);
  return std::string(bytes.data(), size);
}

void StringUtilities::Utf16ToUtf8(std::wstring_view text, std::string& target) {
  if (text.size() > kShort) {
    target = EncodeLong(text);
    return;
  }
  ByteBuffer<kShort> bytes;
  target.assign(bytes.data(), EncodeShort(text, bytes));
}

}  // namespace Zelto::Utilities
