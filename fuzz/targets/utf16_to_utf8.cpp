// UTF-16 to UTF-8 and to bytes, beside an encoder of one code point at a time. The first byte is how much ASCII stands
// in front, and by its top bit whether units of 16 bits follow, or text that may hold wider ones.
#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "fuzz/models/utf.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Utilities::StringUtilities;

// What a conversion gives; nothing when it refuses the text.
template <typename Convert>
std::optional<std::string> Converted(const Convert& convert) {
  try {
    return convert();
  } catch (const std::range_error& error) {
    Require(std::string(error.what()) == "bad conversion", "the error's text");
    return std::nullopt;
  }
}

void Run(Bytes bytes) {
  Input input(bytes);
  const std::uint8_t shape = input.Byte();
  std::vector<wchar_t> text((shape & 0x7FU) % 70, L'a');
  const std::vector<wchar_t> rest = (shape & 0x80U) != 0 ? Units(input.Rest()) : LenientText(input.Rest());
  text.insert(text.end(), rest.begin(), rest.end());
  text.shrink_to_fit();
  const std::wstring_view view = View(text);

  const std::optional<CodePoints> characters = DecodeUtf16(view);
  const std::optional<std::string> expected = characters ? std::optional(EncodeUtf8(*characters)) : std::nullopt;
  Require(Converted([&] { return StringUtilities::Utf16ToUtf8(view); }) == expected, "UTF-16 is encoded as UTF-8");
  std::string target = "before";
  const auto replace = [&] {
    StringUtilities::Utf16ToUtf8(view, target);
    return target;
  };
  Require(Converted(replace) == expected && target == expected.value_or("before"), "both forms encode alike");

  const std::wstring_view up_to_zero = view.substr(0, view.find(L'\0'));
  const bool fits = std::all_of(up_to_zero.begin(), up_to_zero.end(),
                                [](wchar_t unit) { return static_cast<std::uint32_t>(unit) <= 0xFF; });
  const std::optional<std::string> narrow = Converted([&] { return StringUtilities::ToAscii(view); });
  Require(narrow.has_value() == fits, "a unit above 0xFF is no byte");
  Require(!narrow || std::equal(narrow->begin(), narrow->end(), up_to_zero.begin(), up_to_zero.end(),
                                [](char byte, wchar_t unit) { return static_cast<unsigned char>(byte) == unit; }),
          "units become bytes of the same values");
}

const Target target("utf16_to_utf8", Run);

}  // namespace
}  // namespace Zelto::Fuzz
