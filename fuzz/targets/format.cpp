// The library's formatters. The input is a format, whose arguments suit every conversion, as any may ask for them. Of
// its last bytes one conversion and its value are made, to be compared with what the C library prints.
#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"
#include "zelto/time/version.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Utilities::StringUtilities;

constexpr std::ptrdiff_t kArguments = 256;
constexpr std::ptrdiff_t kLargestInsert = 99;
constexpr std::size_t kLongestFormat = 512;
constexpr std::size_t kConversionBytes = 20;

template <typename FormatWith, std::size_t... I>
std::wstring CallWithMany(FormatWith format_with, const wchar_t* format, const void* argument,
                          std::index_sequence<I...>) {
  return format_with(format, (static_cast<void>(I), argument)...);
}

// Every argument is the address of a text that ends, wide or narrow, and holds a long double.
void CheckAnyFormat(const std::vector<wchar_t>& format) {
  const auto count = [&format](wchar_t unit) { return std::count(format.begin(), format.end(), unit); };
  // A long double takes the place of three words at most.
  if (3 * count(L'%') + 2 * count(L'*') + kLargestInsert > kArguments) {
    return;
  }
  const std::wstring text = L"the text of any argument";
  const std::wstring before = text;
  for (const auto format_with : {StringUtilities::SafeSprintf, StringUtilities::FormatMessageW}) {
    CallWithMany(format_with, format.data(), text.c_str(), std::make_index_sequence<kArguments>());
    Require(text == before, "nothing is written through an argument");
  }
}

// A version takes the formats that ask for nothing but its parts.
void CheckVersionFormat(const std::vector<wchar_t>& format) {
  try {
    const std::wstring text = Utilities::Version(1, 22, 4294967295U, 0).ToString(format.data());
    Require(!text.empty() && text.size() <= 255, "a version's text has 1 to 255 units");
  } catch (const Utilities::Win32Exception& error) {
    Require(error.GetErrorCode() == 87, "a version refuses a format with code 87");
  }
}

// What stands between "%" and the letter, and may be given as arguments.
struct Shape {
  explicit Shape(Input& input) {
    const std::uint8_t bits = input.Byte();
    for (std::size_t i = 0; i < 5; ++i) {
      flags.append((bits >> i & 1U), "-+ 0#"[i]);
    }
    stars = (bits & 0x20U) != 0;
    width = input.Byte() % 80 - 40;
    precision = input.Byte() % 40 - 8;
  }

  std::wstring Before(const wchar_t* letters) const {
    const std::wstring digits = precision < 0 ? L"" : L'.' + std::to_wstring(precision);
    return std::wstring(flags.begin(), flags.end()) + (stars ? L"*.*" : std::to_wstring(width) + digits) + letters;
  }

  std::wstring Pad(const std::wstring& text) const {
    const bool left = width < 0 || flags.find('-') != std::string::npos;
    const wchar_t filler = !left && flags.find('0') != std::string::npos ? L'0' : L' ';
    const auto whole = static_cast<std::size_t>(std::abs(width));
    const std::wstring filling(whole - std::min(text.size(), whole), filler);
    return left ? text + filling : filling + text;
  }

  std::string flags;
  std::int32_t width;
  std::int32_t precision;
  bool stars;
};

template <typename Value>
std::wstring Print(const Shape& shape, std::string_view known_flags, const std::string& tail, Value value) {
  std::string format = "%";
  for (const char flag : shape.flags) {
    format.append(known_flags.find(flag) != std::string_view::npos ? 1 : 0, flag);
  }
  format += "*.*" + tail;
  std::string text(1000, '\0');
  const int length = std::snprintf(text.data(), text.size(), format.c_str(), shape.width, shape.precision, value);
  return {text.begin(), text.begin() + length};
}

template <typename Value>
void Check(const Shape& shape, const wchar_t* letters, Value value, const std::wstring& expected) {
  const auto call = [&](auto format_with, const std::wstring& format) {
    return shape.stars ? format_with(format.c_str(), shape.width, shape.precision, value)
                       : format_with(format.c_str(), value);
  };
  const std::wstring conversion = shape.Before(letters);
  Require(call(StringUtilities::SafeSprintf, L"%" + conversion + L"|") == expected + L"|", "a conversion's text");
  if constexpr (!std::is_floating_point_v<Value>) {
    Require(call(StringUtilities::FormatMessageW, L"%1!" + conversion + L"!|") == expected + L"|", "an insert's text");
  }
}

// An integer conversion, the C library's for 64 bits with its flags, and the cut to the size that it has.
struct Integer {
  const wchar_t* letters;
  const char* tail;
  const char* flags;
  std::uint64_t (*cut)(std::uint64_t word);
};

template <typename Number>
std::uint64_t Cut(std::uint64_t word) {
  return static_cast<std::uint64_t>(static_cast<Number>(word));
}

constexpr Integer kIntegers[] = {
    {L"d", "lld", "-+ 0", Cut<std::int32_t>},    {L"hhi", "lld", "-+ 0", Cut<std::int8_t>},
    {L"hd", "lld", "-+ 0", Cut<std::int16_t>},   {L"ld", "lld", "-+ 0", Cut<std::int32_t>},
    {L"I32i", "lld", "-+ 0", Cut<std::int32_t>}, {L"I64d", "lld", "-+ 0", Cut<std::int64_t>},
    {L"ji", "lld", "-+ 0", Cut<std::int64_t>},   {L"td", "lld", "-+ 0", Cut<std::ptrdiff_t>},
    {L"u", "llu", "-0", Cut<std::uint32_t>},     {L"hhu", "llu", "-0", Cut<std::uint8_t>},
    {L"hu", "llu", "-0", Cut<std::uint16_t>},    {L"llu", "llu", "-0", Cut<std::uint64_t>},
    {L"Iu", "llu", "-0", Cut<std::size_t>},      {L"x", "llx", "-#0", Cut<std::uint32_t>},
    {L"lX", "llX", "-#0", Cut<std::uint32_t>},   {L"I64o", "llo", "-#0", Cut<std::uint64_t>},
};

// The memory ends with the text; its zero is left out where the precision makes up for it.
template <typename Character>
void CheckText(const Shape& shape, const wchar_t* letters, Bytes bytes) {
  std::vector<Character> text(bytes.begin(), bytes.end());
  text.insert(text.end(), shape.precision < 0 || static_cast<std::size_t>(shape.precision) > text.size() ? 1 : 0, 0);
  text.shrink_to_fit();
  std::wstring expected(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
  expected.resize(std::min(expected.size(), static_cast<std::size_t>(shape.precision)));
  Check(shape, letters, static_cast<const Character*>(text.data()), shape.Pad(expected));
}

void CheckConversion(Input input) {
  const Shape shape(input);
  const std::uint8_t choice = input.Byte();
  std::uint64_t word = input.Number();
  word |= std::uint64_t{input.Number()} << 32;
  const Integer& integer = kIntegers[choice % std::size(kIntegers)];
  Check(shape, integer.letters, word, Print(shape, integer.flags, integer.tail, integer.cut(word)));

  const char letter = "eEfFgG"[choice % 6];
  const wchar_t letters[] = {static_cast<wchar_t>(letter), L'\0'};
  for (const double real : {std::bit_cast<double>(word), static_cast<double>(static_cast<std::int32_t>(word)) / 1024}) {
    if (!std::isnan(real)) {
      Check(shape, letters, real, Print(shape, "-+ #0", {letter}, real));
    }
  }
  const auto character = static_cast<std::uint16_t>(word % 0xD7FF + 1);
  Check(shape, L"c", character, shape.Pad({static_cast<wchar_t>(character)}));
  const Bytes bytes = input.Rest();
  CheckText<char>(shape, choice % 2 == 0 ? L"S" : L"hs", bytes);
  CheckText<wchar_t>(shape, choice % 2 == 0 ? L"s" : L"lS", bytes);
}

void Run(Bytes bytes) {
  std::vector<wchar_t> format = LenientText(bytes.first(std::min(bytes.size(), kLongestFormat)));
  format.push_back(0);
  format.shrink_to_fit();
  CheckAnyFormat(format);
  CheckVersionFormat(format);
  CheckConversion(Input(bytes.last(std::min(bytes.size(), kConversionBytes))));
}

const Target target("format", Run);

}  // namespace
}  // namespace Zelto::Fuzz
