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
#include <stdexcept>

namespace Zelto::Utilities {
namespace {

// Text is converted in parts, each into a buffer on the stack: short text is allocated once with its final length, and
// what is written beyond a run of ASCII does no harm.
constexpr std::size_t kPart = 512;

// Bytes that are looked at in one step: a loop of this fixed length compiles to vector instructions.
constexpr std::size_t kBlock = 64;

// Text up to this size is short: it is converted on the stack in steps of fewer bytes.
constexpr std::size_t kShort = 64;
constexpr std::size_t kStep = 16;

// Bytes, or units, whose flags fit into one word, the first one in its lowest byte.
constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::uint64_t kHighBits = 0x8080808080808080U;
constexpr std::uint64_t kOnes = 0x0101010101010101U;
static_assert(std::endian::native == std::endian::little);

[[noreturn]] void ThrowBadConversion() {
  throw std::range_error("bad conversion");
}

std::string_view UpToZero(std::string_view text) noexcept {
  return text.substr(0, text.find('\0'));
}

std::wstring_view UpToZero(std::wstring_view text) noexcept {
  return text.substr(0, text.find(L'\0'));
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

// What a text of at most `kSize` bytes or units is converted into. A byte gives at most one unit, and up to a word more
// is overwritten. A unit gives at most three bytes, or four when it stands for a pair or is the first of one.
template <std::size_t kSize>
using UnitBuffer = std::array<wchar_t, kSize + kWord>;
template <std::size_t kSize>
using ByteBuffer = std::array<char, 4 * kSize>;

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

std::string StringUtilities::ToAscii(std::wstring_view text) {
  text = UpToZero(text);
  std::string result(text.size(), '\0');
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    bits |= ValueOf(text[i]);
    result[i] = static_cast<char>(text[i]);
  }
  if (bits > 0xFFU) {
    ThrowBadConversion();
  }
  return result;
}

}  // namespace Zelto::Utilities
