#include "zelto/text/base64.h"

#include "zelto/text/string_utilities.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace Zelto::Utilities {
namespace {

// Three bytes are four characters of six bits each: a quantum.
constexpr std::size_t kBytesPerQuantum = 3;
constexpr std::size_t kCharactersPerQuantum = 4;
constexpr wchar_t kPadding = L'=';
constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The two characters of every 12 bits.
struct CharacterPair {
  wchar_t first;
  wchar_t second;
};
constexpr std::array<CharacterPair, 4096> kPairs = [] {
  std::array<CharacterPair, 4096> pairs{};
  for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
    pairs[bits] = {static_cast<wchar_t>(kAlphabet[bits >> 6]), static_cast<wchar_t>(kAlphabet[bits & 63])};
  }
  return pairs;
}();

// The value of a character at each of the four places of a quantum, shifted to where its bits belong. What is not in
// the alphabet has the mark, which no sum of values reaches.
constexpr std::uint32_t kNotInAlphabet = 0x01000000;
using PlaceValues = std::array<std::uint32_t, 128>;
constexpr std::array<PlaceValues, kCharactersPerQuantum> kPlaces = [] {
  std::array<PlaceValues, kCharactersPerQuantum> places{};
  for (std::size_t place = 0; place < places.size(); ++place) {
    places[place].fill(kNotInAlphabet);
    for (std::size_t value = 0; value < kAlphabet.size(); ++value) {
      places[place][static_cast<unsigned char>(kAlphabet[value])] = static_cast<std::uint32_t>(value)
                                                                    << (6 * (kCharactersPerQuantum - 1 - place));
    }
  }
  return places;
}();

constexpr bool IsSkipped(wchar_t unit) {
  return unit == L' ' || unit == L'\t' || unit == L'\r' || unit == L'\n';
}

[[noreturn]] void ThrowCannotDecode() {
  throw std::runtime_error("Cannot decode base64 string");
}

wchar_t* WriteQuantum(std::uint32_t bits, wchar_t* out) {
  const CharacterPair high = kPairs[bits >> 12];
  const CharacterPair low = kPairs[bits & 0xFFF];
  out[0] = high.first;
  out[1] = high.second;
  out[2] = low.first;
  out[3] = low.second;
  return out + kCharactersPerQuantum;
}

// The 24 bits of four characters, or the mark when one of them is not in the alphabet.
std::uint32_t ReadQuantum(const wchar_t* in) {
  const std::uint32_t a = ValueOf(in[0]), b = ValueOf(in[1]), c = ValueOf(in[2]), d = ValueOf(in[3]);
  if ((a | b | c | d) >= 128) {
    return kNotInAlphabet;
  }
  return kPlaces[0][a] | kPlaces[1][b] | kPlaces[2][c] | kPlaces[3][d];
}

std::uint32_t ReadBytes(const char* in) {
  const auto byte = [in](int i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(in[i])); };
  return byte(0) << 16 | byte(1) << 8 | byte(2);
}

// The number of units at the start of a text that are ASCII and fill whole quanta: there a unit is its byte.
std::size_t CountAsciiQuanta(std::wstring_view text) {
  const auto is_ascii = [](wchar_t unit) { return ValueOf(unit) < 128; };
  const auto count = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_ascii) - text.begin());
  return count - count % kBytesPerQuantum;
}

void AppendEncodedAscii(std::wstring_view quanta, std::wstring& out) {
  const std::size_t start = out.size();
  out.resize(start + quanta.size() / kBytesPerQuantum * kCharactersPerQuantum);
  wchar_t* write = out.data() + start;
  for (const wchar_t* in = quanta.data(); in != quanta.data() + quanta.size(); in += kBytesPerQuantum) {
    write = WriteQuantum(ValueOf(in[0]) << 16 | ValueOf(in[1]) << 8 | ValueOf(in[2]), write);
  }
}

void AppendEncoded(std::string_view bytes, std::wstring& out) {
  const std::size_t start = out.size();
  const std::size_t quanta = bytes.size() / kBytesPerQuantum;
  const std::size_t rest = bytes.size() % kBytesPerQuantum;
  out.resize(start + (quanta + (rest != 0)) * kCharactersPerQuantum);
  wchar_t* write = out.data() + start;
  const char* in = bytes.data();
  for (std::size_t i = 0; i < quanta; ++i, in += kBytesPerQuantum) {
    write = WriteQuantum(ReadBytes(in), write);
  }
  if (rest != 0) {
    const char last[kBytesPerQuantum] = {in[0], rest == 2 ? in[1] : '\0', '\0'};
    write = WriteQuantum(ReadBytes(last), write);
    write[-1] = kPadding;
    if (rest == 1) {
      write[-2] = kPadding;
    }
  }
}

// The number of characters at the start of a text that are quanta of three ASCII bytes, none of them zero: there a byte
// is its unit. Decodes them on the way.
std::size_t DecodeAsciiQuanta(std::wstring_view base64, std::wstring& out) {
  out.resize(base64.size() / kCharactersPerQuantum * kBytesPerQuantum);
  const wchar_t* in = base64.data();
  wchar_t* write = out.data();
  std::size_t done = 0;
  for (; base64.size() - done >= kCharactersPerQuantum; done += kCharactersPerQuantum, in += kCharactersPerQuantum) {
    const std::uint32_t bits = ReadQuantum(in);
    // The subtraction sets the top bit of the lowest byte that is zero; the mark sets the bit above the three bytes.
    if (((bits | (bits - 0x010101)) & (kNotInAlphabet | 0x808080)) != 0) {
      break;
    }
    write[0] = static_cast<wchar_t>(bits >> 16);
    write[1] = static_cast<wchar_t>(bits >> 8 & 0xFF);
    write[2] = static_cast<wchar_t>(bits & 0xFF);
    write += kBytesPerQuantum;
  }
  out.resize(done / kCharactersPerQuantum * kBytesPerQuantum);
  return done;
}

char* WriteBytes(std::uint32_t bits, char* out) {
  out[0] = static_cast<char>(bits >> 16);
  out[1] = static_cast<char>(bits >> 8);
  out[2] = static_cast<char>(bits);
  return out + kBytesPerQuantum;
}

// Reads one quantum with what is skipped between its characters, and pads. Returns its bytes' number: fewer than three
// when it is padded, none when the text ends before it begins.
std::size_t ReadSpacedQuantum(const wchar_t*& in, const wchar_t* end, std::uint32_t& bits) {
  std::size_t characters = 0;
  std::size_t padding = 0;
  bits = 0;
  for (; in != end && characters + padding < kCharactersPerQuantum; ++in) {
    if (IsSkipped(*in)) {
      continue;
    }
    if (*in == kPadding) {
      ++padding;
      continue;
    }
    const std::uint32_t unit = ValueOf(*in);
    if (padding != 0 || unit >= 128 || kPlaces[3][unit] == kNotInAlphabet) {
      ThrowCannotDecode();
    }
    bits |= kPlaces[characters++][unit];
  }
  if (characters + padding == 0) {
    return 0;
  }
  if (characters < 2 || characters + padding != kCharactersPerQuantum) {
    ThrowCannotDecode();
  }
  return characters - 1;
}

std::string DecodeBytes(const wchar_t* in, const wchar_t* end) {
  const auto size = static_cast<std::size_t>(end - in);
  std::string bytes((size / kCharactersPerQuantum + 1) * kBytesPerQuantum, '\0');
  char* write = bytes.data();
  while (in != end) {
    std::uint32_t bits = kNotInAlphabet;
    if (static_cast<std::size_t>(end - in) >= kCharactersPerQuantum) {
      bits = ReadQuantum(in);
    }
    if (bits < kNotInAlphabet) {
      in += kCharactersPerQuantum;
      write = WriteBytes(bits, write);
      continue;
    }
    const std::size_t count = ReadSpacedQuantum(in, end, bits);
    WriteBytes(bits, write);
    write += count;
    if (count != 0 && count < kBytesPerQuantum) {
      // The padded quantum is the last one.
      while (in != end) {
        if (!IsSkipped(*in++)) {
          ThrowCannotDecode();
        }
      }
    }
  }
  bytes.resize(static_cast<std::size_t>(write - bytes.data()));
  return bytes;
}

}  // namespace

std::wstring Base64::Encode(std::wstring_view text) {
  std::wstring result;
  const std::size_t done = CountAsciiQuanta(text);
  AppendEncodedAscii({text.data(), done}, result);
  if (done != text.size()) {
    AppendEncoded(WStringToString(text.substr(done)), result);
  }
  return result;
}

std::wstring Base64::Decode(std::wstring_view base64) {
  std::wstring result;
  const std::size_t done = DecodeAsciiQuanta(base64, result);
  if (done != base64.size()) {
    result += StringToWString(DecodeBytes(base64.data() + done, base64.data() + base64.size()));
  }
  return result;
}

std::string Base64::WStringToString(std::wstring_view text) {
  return StringUtilities::Utf16ToUtf8(text);
}

std::wstring Base64::StringToWString(std::string_view bytes) {
  return StringUtilities::Utf8ToUtf16(bytes);
}

}  // namespace Zelto::Utilities
