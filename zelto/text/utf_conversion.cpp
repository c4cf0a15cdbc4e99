#include "zelto/text/string_utilities.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace Zelto::Utilities {
namespace {

// Bytes or units that are looked at in one step: a loop of this fixed length compiles to vector instructions.
constexpr std::size_t kBlock = 16;

[[noreturn]] void ThrowBadConversion() {
  throw std::range_error("bad conversion");
}

std::string_view UpToZero(std::string_view text) noexcept {
  return text.substr(0, text.find('\0'));
}

std::wstring_view UpToZero(std::wstring_view text) noexcept {
  return text.substr(0, text.find(L'\0'));
}

bool IsAsciiBlock(const char* bytes) noexcept {
  std::uint64_t words[kBlock / sizeof(std::uint64_t)];
  std::memcpy(words, bytes, kBlock);
  return ((words[0] | words[1]) & 0x8080808080808080U) == 0;
}

// The bits that are set in any unit of the block.
std::uint32_t BitsOfBlock(const wchar_t* units) noexcept {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < kBlock; ++i) {
    bits |= ValueOf(units[i]);
  }
  return bits;
}

constexpr bool IsContinuation(unsigned char byte) noexcept {
  return (byte & 0xC0U) == 0x80U;
}

// In well-formed UTF-8 every character has exactly one byte that is no continuation.
std::size_t CountCharacters(std::string_view bytes) noexcept {
  std::size_t count = 0;
  for (const char byte : bytes) {
    count += static_cast<signed char>(byte) >= -0x40 ? 1U : 0U;
  }
  return count;
}

// How long the sequence of a leading byte is and between which bounds its second byte must be: this is where overlong
// forms, surrogates and characters above U+10FFFF show. A length of 0 is no leading byte.
struct Lead {
  unsigned length;
  unsigned char low;
  unsigned char high;
};

constexpr Lead LeadOf(unsigned char byte) noexcept {
  if (byte < 0xC2U) {
    return {0, 0, 0};
  }
  if (byte < 0xE0U) {
    return {2, 0x80, 0xBF};
  }
  if (byte < 0xF0U) {
    return {3, static_cast<unsigned char>(byte == 0xE0U ? 0xA0 : 0x80),
            static_cast<unsigned char>(byte == 0xEDU ? 0x9F : 0xBF)};
  }
  if (byte < 0xF5U) {
    return {4, static_cast<unsigned char>(byte == 0xF0U ? 0x90 : 0x80),
            static_cast<unsigned char>(byte == 0xF4U ? 0x8F : 0xBF)};
  }
  return {0, 0, 0};
}

// Decodes the sequence of more than one byte at `at`, and moves behind it.
wchar_t DecodeSequence(const char*& at, const char* end) {
  const auto byte = [&at](unsigned index) { return static_cast<unsigned char>(at[index]); };
  const Lead lead = LeadOf(byte(0));
  if (lead.length == 0 || static_cast<std::size_t>(end - at) < lead.length || byte(1) < lead.low ||
      byte(1) > lead.high) {
    ThrowBadConversion();
  }
  std::uint32_t value = (byte(0) & (0x7FU >> lead.length)) << 6 | (byte(1) & 0x3FU);
  for (unsigned index = 2; index < lead.length; ++index) {
    if (!IsContinuation(byte(index))) {
      ThrowBadConversion();
    }
    value = value << 6 | (byte(index) & 0x3FU);
  }
  at += lead.length;
  // One unit for a character that has none of its own: cut to 16 bits it could pass for a quotation mark or a
  // backslash.
  return static_cast<wchar_t>(value > 0xFFFFU ? 0xE000U + (value & 0xFFFU) : value);
}

// How many bytes the units need if they are valid: each unit of a pair counts two.
std::size_t CountBytes(std::wstring_view units) noexcept {
  std::size_t count = units.size();
  for (const wchar_t character : units) {
    const std::uint32_t value = ValueOf(character);
    count += (value > 0x7FU ? 1U : 0U) + (value > 0x7FFU ? 1U : 0U) + (value > 0xFFFFU ? 1U : 0U) -
             (IsSurrogate(value) ? 1U : 0U);
  }
  return count;
}

char* EncodeSequence(std::uint32_t value, char* to) noexcept {
  const auto put = [&to](std::uint32_t byte) { *to++ = static_cast<char>(byte); };
  if (value <= 0x7FU) {
    put(value);
  } else if (value <= 0x7FFU) {
    put(0xC0U | value >> 6);
    put(0x80U | (value & 0x3FU));
  } else if (value <= 0xFFFFU) {
    put(0xE0U | value >> 12);
    put(0x80U | (value >> 6 & 0x3FU));
    put(0x80U | (value & 0x3FU));
  } else {
    put(0xF0U | value >> 18);
    put(0x80U | (value >> 12 & 0x3FU));
    put(0x80U | (value >> 6 & 0x3FU));
    put(0x80U | (value & 0x3FU));
  }
  return to;
}

// The character at `at`, which moves behind it.
std::uint32_t ReadCharacter(const wchar_t*& at, const wchar_t* end) {
  const std::uint32_t value = ValueOf(*at++);
  if (!IsSurrogate(value)) {
    if (value > kMaximumCodePoint) {
      ThrowBadConversion();
    }
    return value;
  }
  if (!IsHighSurrogate(value) || at == end || !IsLowSurrogate(ValueOf(*at))) {
    ThrowBadConversion();
  }
  return 0x10000U + ((value & 0x3FFU) << 10) + (ValueOf(*at++) & 0x3FFU);
}

}  // namespace

std::wstring StringUtilities::Utf8ToUtf16(std::string_view text) {
  text = UpToZero(text);
  std::wstring result(CountCharacters(text), L'\0');
  wchar_t* to = result.data();
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    while (static_cast<std::size_t>(end - at) >= kBlock && IsAsciiBlock(at)) {
      for (std::size_t i = 0; i < kBlock; ++i) {
        to[i] = static_cast<wchar_t>(at[i]);
      }
      at += kBlock;
      to += kBlock;
    }
    // Up to the end of a block, so that text of other scripts does not look for ASCII at every character.
    const char* const stop = end - at > static_cast<std::ptrdiff_t>(kBlock) ? at + kBlock : end;
    while (at < stop) {
      if (static_cast<signed char>(*at) >= 0) {
        *to++ = static_cast<wchar_t>(*at++);
      } else {
        *to++ = DecodeSequence(at, end);
      }
    }
  }
  return result;
}

void StringUtilities::Utf8ToUtf16(std::string_view text, std::wstring& target) {
  target = Utf8ToUtf16(text);
}

std::string StringUtilities::Utf16ToUtf8(std::wstring_view text) {
  std::string result(CountBytes(text), '\0');
  char* to = result.data();
  const wchar_t* at = text.data();
  const wchar_t* const end = at + text.size();
  while (at != end) {
    while (static_cast<std::size_t>(end - at) >= kBlock && BitsOfBlock(at) <= 0x7FU) {
      for (std::size_t i = 0; i < kBlock; ++i) {
        to[i] = static_cast<char>(at[i]);
      }
      at += kBlock;
      to += kBlock;
    }
    const wchar_t* const stop = end - at > static_cast<std::ptrdiff_t>(kBlock) ? at + kBlock : end;
    while (at < stop) {
      to = EncodeSequence(ReadCharacter(at, end), to);
    }
  }
  return result;
}

void StringUtilities::Utf16ToUtf8(std::wstring_view text, std::string& target) {
  target = Utf16ToUtf8(text);
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
