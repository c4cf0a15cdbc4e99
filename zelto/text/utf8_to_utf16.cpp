#include "zelto/text/bad_conversion.h"
#include "zelto/text/conversion_parts.h"
#include "zelto/text/string_utilities.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>

namespace Zelto::Utilities {
namespace {

// Bytes whose flags fit into one word, the first one in its lowest byte.
constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::uint64_t kHighBits = 0x8080808080808080U;
constexpr std::uint64_t kOnes = 0x0101010101010101U;
static_assert(std::endian::native == std::endian::little);

std::string_view UpToZero(std::string_view text) noexcept {
  return text.substr(0, text.find('\0'));
}

constexpr std::uint32_t ByteValue(char byte) noexcept {
  return static_cast<unsigned char>(byte);
}

constexpr bool IsAscii(char byte) noexcept {
  return ByteValue(byte) <= 0x7FU;
}

constexpr bool IsContinuation(char byte) noexcept {
  return (ByteValue(byte) & 0xC0U) == 0x80U;
}

// The length of the longest start of a text that is ASCII.
std::size_t CountAscii(std::string_view text) noexcept {
  std::size_t count = 0;
  for (; text.size() - count >= kBlock; count += kBlock) {
    std::uint8_t bits = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
      bits = static_cast<std::uint8_t>(bits | ByteValue(text[count + i]));
    }
    if (bits > 0x7FU) {
      break;
    }
  }
  while (count < text.size() && IsAscii(text[count])) {
    ++count;
  }
  return count;
}

// Widens bytes; false when one of them is zero or not ASCII.
template <std::size_t kSize>
inline bool WidenBytes(const char* at, wchar_t* to) noexcept {
  // Copied first: otherwise each unit that is written might change the bytes to be read.
  std::array<std::uint8_t, kSize> bytes;
  std::memcpy(bytes.data(), at, kSize);
  for (std::size_t i = 0; i < kSize; ++i) {
    to[i] = static_cast<wchar_t>(bytes[i]);
  }
  // The subtraction sets the highest bit of a byte that is zero.
  std::uint64_t flags = 0;
  for (const std::uint64_t word : std::bit_cast<std::array<std::uint64_t, kSize / kWord>>(bytes)) {
    flags |= word | (word - kOnes);
  }
  return (flags & kHighBits) == 0;
}

// Widens a whole text of at least `kSize` bytes; false when it holds a byte that is zero or not ASCII.
template <std::size_t kSize>
inline bool WidenText(std::string_view text, wchar_t* to) noexcept {
  const std::size_t last = text.size() - kSize;
  for (std::size_t i = 0; i < last; i += kSize) {
    if (!WidenBytes<kSize>(text.data() + i, to + i)) {
      return false;
    }
  }
  // The last step may overlap the one before.
  return WidenBytes<kSize>(text.data() + last, to + last);
}

// Widens a whole text; false when it holds a byte that is zero or not ASCII.
bool WidenAscii(std::string_view text, wchar_t* to) noexcept {
  if (text.size() >= kStep) {
    return WidenText<kStep>(text, to);
  }
  if (text.size() >= kWord) {
    return WidenText<kWord>(text, to);
  }
  bool is_ascii = true;
  for (std::size_t i = 0; i < text.size(); ++i) {
    to[i] = static_cast<wchar_t>(ByteValue(text[i]));
    is_ascii = is_ascii && IsAscii(text[i]) && text[i] != '\0';
  }
  return is_ascii;
}

// In well-formed UTF-8 every character has exactly one byte that is no continuation.
std::size_t CountCharacters(std::string_view bytes) noexcept {
  constexpr std::size_t kLanes = 16;
  constexpr std::size_t kMostRounds = std::numeric_limits<std::uint8_t>::max();
  std::size_t count = 0;
  while (bytes.size() >= kLanes) {
    // Counters of eight bits, added up before one can overflow.
    std::array<std::uint8_t, kLanes> counters{};
    const std::size_t size = std::min(bytes.size() / kLanes, kMostRounds) * kLanes;
    for (std::size_t start = 0; start < size; start += kLanes) {
      for (std::size_t i = 0; i < kLanes; ++i) {
        counters[i] = static_cast<std::uint8_t>(counters[i] + (IsContinuation(bytes[start + i]) ? 0 : 1));
      }
    }
    count = std::accumulate(counters.begin(), counters.end(), count);
    bytes.remove_prefix(size);
  }
  return count + static_cast<std::size_t>(
                     std::count_if(bytes.begin(), bytes.end(), [](char byte) { return !IsContinuation(byte); }));
}

// Decodes the sequence of two bytes at `at`.
inline wchar_t DecodeTwoBytes(const char* at, const char* end) {
  if (ByteValue(at[0]) < 0xC2U || end - at < 2 || !IsContinuation(at[1])) {
    ThrowBadConversion();
  }
  return static_cast<wchar_t>((ByteValue(at[0]) & 0x1FU) << 6 | (ByteValue(at[1]) & 0x3FU));
}

// Decodes the sequence of three bytes at `at`. Overlong forms and surrogates show in the value.
inline wchar_t DecodeThreeBytes(const char* at, const char* end) {
  if (end - at < 3) {
    ThrowBadConversion();
  }
  // A continuation with its highest bit turned over is below 0x40: then the value is made of the bits of all three.
  const std::uint32_t second = ByteValue(at[1]) ^ 0x80U;
  const std::uint32_t third = ByteValue(at[2]) ^ 0x80U;
  const std::uint32_t value = (ByteValue(at[0]) & 0x0FU) << 12 | second << 6 | third;
  if ((second | third) > 0x3FU || value <= 0x7FFU || IsSurrogate(value)) {
    ThrowBadConversion();
  }
  return static_cast<wchar_t>(value);
}

// Decodes the sequence of four bytes at `at`: its character has no unit of its own.
inline wchar_t DecodeFourBytes(const char* at, const char* end) {
  if (end - at < 4 || (ByteValue(at[0]) & 0xF8U) != 0xF0U || !IsContinuation(at[1]) || !IsContinuation(at[2]) ||
      !IsContinuation(at[3])) {
    ThrowBadConversion();
  }
  const std::uint32_t value = (ByteValue(at[0]) & 0x07U) << 18 | (ByteValue(at[1]) & 0x3FU) << 12 |
                              (ByteValue(at[2]) & 0x3FU) << 6 | (ByteValue(at[3]) & 0x3FU);
  if (value <= 0xFFFFU || value > kMaximumCodePoint) {
    ThrowBadConversion();
  }
  // Cut to 16 bits it could pass for a quotation mark or a backslash.
  return static_cast<wchar_t>(0xE000U + (value & 0xFFFU));
}

// What a text of at most `kSize` bytes is converted into. A byte gives at most one unit, and up to a word more is
// overwritten.
template <std::size_t kSize>
using UnitBuffer = std::array<wchar_t, kSize + kWord>;

// Where a conversion has come to.
struct Decoded {
  const char* at;
  std::size_t units;
};

// Decodes from `at` on until `stop` is reached or passed; the text goes on to `end`.
template <std::size_t kSize>
Decoded DecodePart(const char* at, const char* stop, const char* end, UnitBuffer<kSize>& units) {
  wchar_t* to = units.data();
  while (at < stop) {
    if (static_cast<std::size_t>(end - at) >= kWord) {
      // A whole word is widened, and then taken as far as it is ASCII. Without a byte above ASCII all 64 bits are zero.
      std::uint64_t word = 0;
      std::memcpy(&word, at, kWord);
      for (std::size_t i = 0; i < kWord; ++i) {
        to[i] = static_cast<wchar_t>(ByteValue(at[i]));
      }
      const std::size_t ascii = static_cast<std::size_t>(std::countr_zero(word & kHighBits)) / 8;
      at += ascii;
      to += ascii;
      if (ascii == kWord) {
        continue;
      }
    } else if (IsAscii(*at)) {
      *to++ = static_cast<wchar_t>(*at++);
      continue;
    }
    do {
      const std::uint32_t first = ByteValue(*at);
      if (first < 0xE0U) {
        *to++ = DecodeTwoBytes(at, end);
        at += 2;
      } else if (first < 0xF0U) {
        // Characters of three bytes mostly stand together.
        do {
          *to++ = DecodeThreeBytes(at, end);
          at += 3;
        } while (at < stop && (ByteValue(*at) & 0xF0U) == 0xE0U);
      } else {
        *to++ = DecodeFourBytes(at, end);
        at += 4;
      }
    } while (at < stop && !IsAscii(*at));
  }
  return {at, static_cast<std::size_t>(to - units.data())};
}

// Decodes a short text up to its first zero byte; returns the number of units.
std::size_t DecodeShort(std::string_view text, UnitBuffer<kShort>& units) {
  if (WidenAscii(text, units.data())) {
    return text.size();
  }
  text = UpToZero(text);
  const char* const end = text.data() + text.size();
  return DecodePart<kShort>(text.data(), end, end, units).units;
}

std::wstring DecodeLong(std::string_view text) {
  text = UpToZero(text);
  if (CountAscii(text) == text.size()) {
    return std::wstring(text.begin(), text.end());
  }
  // A sequence that begins in one part may end in the next.
  UnitBuffer<kPart> units;
  std::wstring result;
  if (text.size() > kPart) {
    result.reserve(CountCharacters(text));
  }
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    const char* const stop = at + std::min(kPart, static_cast<std::size_t>(end - at));
    const Decoded decoded = DecodePart<kPart>(at, stop, end, units);
    at = decoded.at;
    result.append(units.data(), decoded.units);
  }
  return result;
}

}  // namespace

std::wstring StringUtilities::Utf8ToUtf16(std::string_view text) {
  if (text.size() > kShort) {
    return DecodeLong(text);
  }
  UnitBuffer<kShort> units;
  const std::size_t size = DecodeShort(text, units);
  return std::wstring(units.data(), size);
}

void StringUtilities::Utf8ToUtf16(std::string_view text, std::wstring& target) {
  if (text.size() > kShort) {
    target = DecodeLong(text);
    return;
  }
  UnitBuffer<kShort> units;
  target.assign(units.data(), DecodeShort(text, units));
}

}  // namespace Zelto::Utilities
