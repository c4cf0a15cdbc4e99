// UTF-8 and UTF-16 both ways, and units to bytes, beside a converter of one code point at a time. The first byte is how
// much ASCII stands in front, so that the vector steps begin elsewhere, and by its top bit whether the rest as wide
// text is units of 16 bits, or text that may hold wider ones.
#include "fuzz/models/utf.h"

#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Utilities::StringUtilities;

// `length` letters, then the rest. The memory ends with the text.
template <typename Character, typename Rest>
std::vector<Character> Behind(std::size_t length, const Rest& rest) {
  std::vector<Character> text(length, Character{'a'});
  text.insert(text.end(), rest.begin(), rest.end());
  text.shrink_to_fit();
  return text;
}

// What a conversion gives; nothing when it refuses the text.
template <typename Convert>
auto Converted(const Convert& convert) -> std::optional<decltype(convert())> {
  try {
    return convert();
  } catch (const std::range_error& error) {
    Require(std::string(error.what()) == "bad conversion", "the error's text");
    return std::nullopt;
  }
}

// Both forms of a conversion; the second one leaves its target alone when it refuses the text.
template <typename View, typename Result>
void CheckBoth(Result (*convert)(View), void (*convert_to)(View, Result&), View text,
               const std::optional<Result>& expected, const Result& before) {
  Require(Converted([&] { return convert(text); }) == expected, "a text is converted by the book, or refused");
  Result target = before;
  const auto replace = [&] {
    convert_to(text, target);
    return target;
  };
  Require(Converted(replace) == expected && target == expected.value_or(before), "both forms convert alike");
}

void CheckUtf8(std::string_view text) {
  const std::string_view read = text.substr(0, text.find('\0'));
  const std::optional<CodePoints> characters = DecodeUtf8(read);
  const auto expected = characters ? std::optional(OneUnitEach(*characters)) : std::nullopt;
  CheckBoth<std::string_view, std::wstring>(StringUtilities::Utf8ToUtf16, StringUtilities::Utf8ToUtf16, text, expected,
                                            L"before");
}

void CheckUtf16(std::wstring_view text) {
  const std::optional<CodePoints> characters = DecodeUtf16(text);
  const auto expected = characters ? std::optional(EncodeUtf8(*characters)) : std::nullopt;
  CheckBoth<std::wstring_view, std::string>(StringUtilities::Utf16ToUtf8, StringUtilities::Utf16ToUtf8, text, expected,
                                            "before");

  const std::wstring_view up_to_zero = text.substr(0, text.find(L'\0'));
  const bool fits = std::all_of(up_to_zero.begin(), up_to_zero.end(),
                                [](wchar_t unit) { return static_cast<std::uint32_t>(unit) <= 0xFF; });
  const auto bytes = fits ? std::optional(std::string(up_to_zero.begin(), up_to_zero.end())) : std::nullopt;
  Require(Converted([&] { return StringUtilities::ToAscii(text); }) == bytes, "units of one byte become bytes");
}

void Run(Bytes bytes) {
  Input input(bytes);
  const std::uint8_t shape = input.Byte();
  const std::size_t front = (shape & 0x7FU) % 70;
  const Bytes rest = input.Rest();
  const std::vector<char> narrow = Behind<char>(front, rest);
  CheckUtf8({narrow.data(), narrow.size()});
  CheckUtf16(View(Behind<wchar_t>(front, (shape & 0x80U) != 0 ? Units(rest) : LenientText(rest))));
}

const Target target("utf", Run);

}  // namespace
}  // namespace Zelto::Fuzz
