// UTF-8 to UTF-16 beside a decoder of one code point at a time. The first byte is how much ASCII stands in front, so
// that the vector steps begin elsewhere.
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

void Run(Bytes bytes) {
  Input input(bytes);
  std::vector<char> text(input.Byte() % 70, 'a');
  const Bytes rest = input.Rest();
  text.insert(text.end(), rest.begin(), rest.end());
  text.shrink_to_fit();
  const std::string_view view(text.data(), text.size());
  const std::string_view read = view.substr(0, view.find('\0'));

  const std::optional<CodePoints> expected = DecodeUtf8(read);
  std::wstring target = L"before";
  try {
    StringUtilities::Utf8ToUtf16(view, target);
    Require(expected.has_value(), "malformed UTF-8 is refused");
    Require(target == OneUnitEach(*expected), "UTF-8 is decoded unit by unit");
    Require(StringUtilities::Utf8ToUtf16(view) == target, "both forms decode alike");
  } catch (const std::range_error& error) {
    Require(!expected, "well-formed UTF-8 is accepted");
    Require(std::string(error.what()) == "bad conversion", "the error's text");
    Require(target == L"before", "a refused text leaves the target as it was");
    return;
  }
  if (std::all_of(expected->begin(), expected->end(), [](std::uint32_t value) { return value < 0x10000; })) {
    Require(StringUtilities::Utf16ToUtf8(target) == read, "below U+10000 the way back gives the same bytes");
  }
}

const Target target("utf8_to_utf16", Run);

}  // namespace
}  // namespace Zelto::Fuzz
