#include "zelto/text/base64.h"

#include "zelto/text/string_utilities.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Zelto::Utilities {
namespace {

// Three bytes are four characters of six bits each: a quantum.
constexpr std::size_t kBytesPerQuantum = 3;
constexpr std::size_t kCharactersPerQuantum = 4;
constexpr wchar_t kPadding = L'=';

// Characters of a text that is decoded on the stack.
constexpr std::size_t kShortText = 128;

// Quanta that are converted in one step. Every step is a loop of fixed length over lanes of one size, which compiles to
// vector instructions.
constexpr std::size_t kBlockQuanta = 16;
constexpr std::size_t kBlockBytes = kBlockQuanta * kBytesPerQuantum;
constexpr std::size_t kBlockCharacters = kBlockQuanta * kCharactersPerQuantum;
using Lanes = std::array<std::uint32_t, kBlockQuanta>;
using Sextets = std::array<std::int8_t, kBlockCharacters>;

// A lane holds its first byte lowest.
static_assert(std::endian::native == std::endian::little);

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

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

// All bits where the condition holds: selects without a branch and in lanes of one byte.
constexpr std::int8_t Mask(bool condition) {
  return condition ? -1 : 0;
}

// The alphabet by arithmetic, for loops that become vector instructions.
constexpr std::int8_t ComputeCharacter(std::int8_t sextet) {
  return static_cast<std::int8_t>(sextet + 'A' + (Mask(sextet > 25) & ('a' - 'A' - 26)) +
                                  (Mask(sextet > 51) & ('0' - 'a' - 26)) + (Mask(sextet > 61) & ('+' - '0' - 10)) +
                                  (Mask(sextet > 62) & ('/' - '+' - 1)));
}

constexpr bool IsSkipped(wchar_t unit) {
  return unit == L' ' || unit == L'\t' || unit == L'\r' || unit == L'\n';
}

[[noreturn]] void ThrowCannotDecode() {
  throw std::runtime_error("Cannot decode base64 string");
}

// The bytes of a quantum, the first one lowest, as four sextets, the first one lowest.
constexpr std::uint32_t SplitLane(std::uint32_t bytes) {
  return (bytes >> 2 & 0x3F) | (bytes << 12 & 0x3000) | (bytes >> 4 & 0x0F00) | (bytes << 10 & 0x3C0000) |
         (bytes >> 6 & 0x030000) | (bytes << 8 & 0x3F000000);
}

// Reads one byte more than a block.
void EncodeBlock(const char* in, wchar_t* out) {
  Lanes lanes;
  for (std::size_t i = 0; i < kBlockQuanta; ++i) {
    std::memcpy(&lanes[i], in + i * kBytesPerQuantum, sizeof(lanes[i]));
  }
  for (std::uint32_t& lane : lanes) {
    lane = SplitLane(lane);
  }
  Sextets sextets;
  std::memcpy(sextets.data(), lanes.data(), sizeof(sextets));
  for (std::int8_t& sextet : sextets) {
    sextet = ComputeCharacter(sextet);
  }
  for (std::size_t i = 0; i < kBlockCharacters; ++i) {
    out[i] = static_cast<wchar_t>(sextets[i]);
  }
}

constexpr std::uint32_t ByteOf(char byte) {
  return static_cast<unsigned char>(byte);
}

void EncodeQuantum(std::uint32_t first, std::uint32_t second, std::uint32_t third, wchar_t* out) {
  out[0] = static_cast<wchar_t>(kAlphabet[first >> 2]);
  out[1] = static_cast<wchar_t>(kAlphabet[(first << 4 & 0x30) | second >> 4]);
  out[2] = static_cast<wchar_t>(kAlphabet[(second << 2 & 0x3C) | third >> 6]);
  out[3] = static_cast<wchar_t>(kAlphabet[third & 0x3F]);
}

std::wstring EncodeBytes(std::string_view bytes) {
  std::wstring result(
      (bytes.size() / kBytesPerQuantum + (bytes.size() % kBytesPerQuantum != 0)) * kCharactersPerQuantum, kPadding);
  wchar_t* out = result.data();
  for (; bytes.size() > kBlockBytes; out += kBlockCharacters) {
    EncodeBlock(bytes.data(), out);
    bytes.remove_prefix(kBlockBytes);
  }
  for (; bytes.size() >= kBytesPerQuantum; out += kCharactersPerQuantum) {
    EncodeQuantum(ByteOf(bytes[0]), ByteOf(bytes[1]), ByteOf(bytes[2]), out);
    bytes.remove_prefix(kBytesPerQuantum);
  }
  if (!bytes.empty()) {
    EncodeQuantum(ByteOf(bytes[0]), bytes.size() > 1 ? ByteOf(bytes[1]) : 0, 0, out);
    std::fill(out + bytes.size() + 1, out + kCharactersPerQuantum, kPadding);
  }
  return result;
}

// The 24 bits of four characters, or the mark when one of them is not in the alphabet.
std::uint32_t ReadQuantum(const wchar_t* in) {
  const std::uint32_t a = ValueOf(in[0]), b = ValueOf(in[1]), c = ValueOf(in[2]), d = ValueOf(in[3]);
  if ((a | b | c | d) >= 128) {
    return kNotInAlphabet;
  }
  return kPlaces[0][a] | kPlaces[1][b] | kPlaces[2][c] | kPlaces[3][d];
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

// Reads one quantum with what is skipped between its characters, and moves behind it. Returns the number of its bytes:
// fewer than three when it is padded, none when the text ends before it begins.
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

// Room for the bytes of a text; the last quantum is written whole.
constexpr std::size_t RoomForBytes(std::size_t characters) {
  return (characters / kCharactersPerQuantum + 1) * kBytesPerQuantum;
}

// Returns the number of bytes.
std::size_t DecodeBytes(std::wstring_view base64, char* const out) {
  const wchar_t* in = base64.data();
  const wchar_t* const end = in + base64.size();
  char* write = out;
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
      if (!std::all_of(in, end, IsSkipped)) {
        ThrowCannotDecode();
      }
      break;
    }
  }
  return static_cast<std::size_t>(write - out);
}

}  // namespace

std::wstring Base64::Encode(std::wstring_view text) {
  return EncodeBytes(WStringToString(text));
}

std::wstring Base64::Decode(std::wstring_view base64) {
  if (base64.size() <= kShortText) {
    std::array<char, RoomForBytes(kShortText)> bytes;
    const std::size_t size = DecodeBytes(base64, bytes.data());
    return StringToWString({bytes.data(), size});
  }
  std::wstring result;
  base64.remove_prefix(DecodeAsciiQuanta(base64, result));
  if (!base64.empty()) {
    std::string bytes(RoomForBytes(base64.size()), '\0');
    bytes.resize(DecodeBytes(base64, bytes.data()));
    result += StringToWString(bytes);
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
