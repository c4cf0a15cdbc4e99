#include "fuzz/models/printf.h"

#include "fuzz/models/utf.h"

#include <algorithm>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <type_traits>

namespace Zelto::Fuzz {
namespace {

constexpr int kMaximumField = 65535;
constexpr std::wstring_view kIntegers = L"diouxX";
constexpr std::wstring_view kReals = L"eEfFgGaA";
constexpr std::wstring_view kTexts = L"sScC";

bool Contains(std::wstring_view letters, wchar_t letter) {
  return letter != 0 && letters.find(letter) != std::wstring_view::npos;
}

int TakeNumber(std::wstring_view& format) {
  std::int64_t number = 0;
  for (; !format.empty() && format[0] >= L'0' && format[0] <= L'9'; format.remove_prefix(1)) {
    number = std::min<std::int64_t>(number * 10 + (format[0] - L'0'), std::numeric_limits<int>::max());
  }
  return static_cast<int>(number);
}

bool Take(std::wstring_view& format, std::wstring_view front) {
  if (!format.starts_with(front)) {
    return false;
  }
  format.remove_prefix(front.size());
  return true;
}

bool Fits(std::wstring_view size, wchar_t letter) {
  const bool integer = Contains(kIntegers, letter) || letter == L'n';
  if (size.empty()) {
    return integer || Contains(kReals, letter) || Contains(kTexts, letter) || letter == L'p';
  }
  if (size == L"L") {
    return Contains(kReals, letter);
  }
  if (size == L"w") {
    return Contains(kTexts, letter);
  }
  return integer || (size == L"h" && Contains(kTexts, letter)) ||
         (size == L"l" && (Contains(kTexts, letter) || Contains(kReals, letter)));
}

// The word as a number of the conversion's size, its sign extended when it has one.
std::uint64_t Cut(const Conversion& conversion, std::uint64_t word) {
  const std::wstring& size = conversion.size;
  const bool native = size == L"z" || size == L"t" || size == L"I";
  if (size == L"ll" || size == L"I64" || size == L"j" || (native && sizeof(void*) == 8)) {
    return word;
  }
  const unsigned spare = size == L"hh" ? 56 : (size == L"h" ? 48 : 32);
  const bool with_sign = conversion.letter == L'd' || conversion.letter == L'i';
  return with_sign ? static_cast<std::uint64_t>(static_cast<std::int64_t>(word << spare) >> spare)
                   : word << spare >> spare;
}

template <typename Value>
std::wstring PrintNarrow(const Conversion& conversion, std::string_view flags, const char* tail, Value value) {
  std::string format = "%";
  for (const char flag : flags) {
    if (conversion.Has(static_cast<wchar_t>(flag))) {
      format += flag;
    }
  }
  format += "*.*";
  format += tail;
  const int length = std::snprintf(nullptr, 0, format.c_str(), conversion.width, conversion.precision, value);
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::snprintf(text.data(), text.size(), format.c_str(), conversion.width, conversion.precision, value);
  return {text.begin(), text.end() - 1};
}

std::wstring Pad(const Conversion& conversion, std::wstring text) {
  const auto width = static_cast<std::size_t>(conversion.width);
  if (text.size() < width) {
    const wchar_t filler = conversion.Has(L'0') && !conversion.Has(L'-') ? L'0' : L' ';
    text.insert(conversion.Has(L'-') ? text.size() : 0, width - text.size(), filler);
  }
  return text;
}

template <typename Character>
std::wstring ReadText(const Character* text, int precision) {
  std::wstring read;
  for (; (precision < 0 || read.size() < static_cast<std::size_t>(precision)) && *text != 0; ++text) {
    read += static_cast<wchar_t>(static_cast<std::make_unsigned_t<Character>>(*text));
  }
  return read;
}

std::wstring TextAt(const Conversion& conversion, std::uint64_t word) {
  const auto address = static_cast<std::uintptr_t>(word);
  if (address == 0) {
    return ReadText("(null)", conversion.precision);
  }
  return conversion.IsNarrow() ? ReadText(reinterpret_cast<const char*>(address), conversion.precision)
                               : ReadText(reinterpret_cast<const wchar_t*>(address), conversion.precision);
}

bool FirstRealIsWord(int marker, ...) {
  std::va_list list;
  va_start(list, marker);
  const double first = va_arg(list, double);
  va_end(list);
  return first == 1.0;
}

}  // namespace

bool Conversion::IsReal() const {
  return Contains(kReals, letter);
}

bool Conversion::IsNarrow() const {
  return size.empty() ? letter == L'S' || letter == L'C' : size == L"h";
}

void Conversion::SetWidth(std::int32_t value) {
  if (value < 0) {
    flags += L'-';
  }
  width = value == std::numeric_limits<int>::min() ? std::numeric_limits<int>::max() : std::abs(value);
}

bool Conversion::IsWithinLimits() const {
  return width <= kMaximumField && (precision <= kMaximumField || IsText());
}

std::optional<Conversion> TakeConversion(std::wstring_view& format) {
  Conversion conversion;
  const std::size_t flags = std::min(format.find_first_not_of(L"-+ 0#"), format.size());
  conversion.flags = format.substr(0, flags);
  format.remove_prefix(flags);
  conversion.star_width = Take(format, L"*");
  conversion.width = conversion.star_width ? 0 : TakeNumber(format);
  if (Take(format, L".")) {
    conversion.star_precision = Take(format, L"*");
    conversion.precision = conversion.star_precision ? -1 : TakeNumber(format);
  }
  for (const wchar_t* size : {L"hh", L"h", L"ll", L"l", L"w", L"I64", L"I32", L"I", L"z", L"t", L"j", L"L"}) {
    if (Take(format, size)) {
      conversion.size = size;
      break;
    }
  }
  if (format.empty() || !Fits(conversion.size, format[0])) {
    return std::nullopt;
  }
  conversion.letter = format[0];
  format.remove_prefix(1);
  if (!conversion.IsWithinLimits()) {
    return std::nullopt;
  }
  return conversion;
}

std::optional<std::wstring> Print(const Conversion& conversion, std::uint64_t word, double real) {
  if (!conversion.IsWithinLimits()) {
    return std::nullopt;
  }
  const std::uint64_t number = Cut(conversion, word);
  const char letter = static_cast<char>(conversion.letter);
  switch (letter) {
    case 'n':
      return L"";
    case 's':
    case 'S':
      return Pad(conversion, TextAt(conversion, word));
    case 'c':
    case 'C': {
      const auto character = static_cast<std::uint32_t>(conversion.IsNarrow() ? word & 0xFF : word & 0xFFFFFFFF);
      const auto units = InUnits(std::wstring(1, static_cast<wchar_t>(character)));
      return units ? std::optional(Pad(conversion, *units)) : std::nullopt;
    }
    case 'p': {
      Conversion digits = conversion;
      digits.precision = 2 * sizeof(void*);
      return PrintNarrow(digits, "-", "llX", static_cast<unsigned long long>(static_cast<std::uintptr_t>(word)));
    }
    case 'd':
    case 'i':
      return PrintNarrow(conversion, "-+ 0", "lld", static_cast<long long>(number));
    case 'u':
      return PrintNarrow(conversion, "-0", "llu", static_cast<unsigned long long>(number));
    case 'o':
    case 'x':
    case 'X': {
      const char tail[] = {'l', 'l', letter, '\0'};
      return PrintNarrow(conversion, "-#0", tail, static_cast<unsigned long long>(number));
    }
    default: {
      const char tail[] = {letter, '\0'};
      return PrintNarrow(conversion, "-+ #0", tail, real);
    }
  }
}

bool Arguments::RealsAreWords() {
  static const bool are_words = FirstRealIsWord(0, std::bit_cast<std::uint64_t>(1.0), 2.0);
  return are_words;
}

}  // namespace Zelto::Fuzz
