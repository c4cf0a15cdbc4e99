// Base64 both ways beside a codec of one character at a time: what is given is decoded, and encoded as text. The first
// byte is how many characters stand in front, in fours, so that the vector steps begin elsewhere.
#include "zelto/text/base64.h"

#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "fuzz/models/utf.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Zelto::Fuzz {
namespace {

using Utilities::Base64;

constexpr std::wstring_view kAlphabet = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The bytes; nothing when the text is not Base64.
std::optional<std::string> DecodeText(std::wstring_view text) {
  std::wstring characters;
  for (const wchar_t unit : text) {
    if (std::wstring_view(L" \t\r\n").find(unit) == std::wstring_view::npos) {
      characters += unit;
    }
  }
  std::size_t padding = 0;
  while (padding < 2 && padding < characters.size() && characters[characters.size() - 1 - padding] == L'=') {
    ++padding;
  }
  if (characters.size() % 4 != 0) {
    return std::nullopt;
  }
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const wchar_t character : characters.substr(0, characters.size() - padding)) {
    const std::size_t value = kAlphabet.find(character);
    if (value == std::wstring_view::npos) {
      return std::nullopt;
    }
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes.push_back(static_cast<char>(bits >> count & 0xFF));
    }
  }
  return bytes;
}

void CheckDecoding(std::wstring_view text) {
  const std::optional<std::string> bytes = DecodeText(text);
  const std::optional<CodePoints> characters =
      bytes ? DecodeUtf8(std::string_view(*bytes).substr(0, bytes->find('\0'))) : std::nullopt;
  try {
    const std::wstring decoded = Base64::Decode(text);
    Require(bytes.has_value(), "what is not Base64 is refused");
    Require(characters.has_value(), "bytes that are not UTF-8 are refused");
    Require(decoded == OneUnitEach(*characters), "the bytes are read as UTF-8");
  } catch (const std::range_error& error) {
    Require(bytes.has_value() && !characters && std::string(error.what()) == "bad conversion",
            "only bytes that are not UTF-8 are a bad conversion");
  } catch (const std::runtime_error& error) {
    Require(!bytes && std::string(error.what()) == "Cannot decode base64 string", "Base64 is accepted");
  }
}

void CheckEncoding(std::wstring_view text) {
  const std::optional<CodePoints> characters = DecodeUtf16(text);
  try {
    const std::wstring encoded = Base64::Encode(text);
    Require(characters.has_value(), "a lone surrogate is refused");
    const std::string bytes = EncodeUtf8(*characters);
    Require(DecodeText(encoded) == bytes && encoded.size() == (bytes.size() + 2) / 3 * 4,
            "the text's UTF-8 is encoded");
    CheckDecoding(encoded);
  } catch (const std::range_error&) {
    Require(!characters, "well-formed text is encoded");
  }
}

void Run(Bytes bytes) {
  Input input(bytes);
  std::vector<wchar_t> text(std::size_t{4} * (input.Byte() % 40), L'Q');
  const std::vector<wchar_t> rest = LenientText(input.Rest());
  text.insert(text.end(), rest.begin(), rest.end());
  text.shrink_to_fit();
  CheckDecoding(View(text));
  CheckEncoding(View(text));
}

const Target target("base64", Run);

}  // namespace
}  // namespace Zelto::Fuzz
