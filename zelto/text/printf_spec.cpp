#include "zelto/text/printf_spec.h"

#include "zelto/text/ascii.h"

#include <limits>
#include <string_view>

namespace Zelto::Utilities {
namespace {

constexpr std::wstring_view kIntegers = L"diouxX";
constexpr std::wstring_view kReals = L"eEfFgGaA";
constexpr std::wstring_view kTexts = L"sScC";

bool Contains(std::wstring_view letters, wchar_t letter) noexcept {
  return letters.find(letter) != std::wstring_view::npos;
}

bool Skip(const wchar_t*& at, std::wstring_view expected) noexcept {
  const wchar_t* next = at;
  for (const wchar_t unit : expected) {
    if (*next++ != unit) {
      return false;
    }
  }
  at = next;
  return true;
}

void ParseFlags(const wchar_t*& at, PrintfSpec& spec) noexcept {
  for (;; ++at) {
    switch (*at) {
      case L'-':
        spec.left = true;
        break;
      case L'+':
        spec.plus = true;
        break;
      case L' ':
        spec.blank = true;
        break;
      case L'0':
        spec.zero = true;
        break;
      case L'#':
        spec.alternate = true;
        break;
      default:
        return;
    }
  }
}

// Digits as a number; one that is too great is the greatest. No digits are 0.
int ParseNumber(const wchar_t*& at) noexcept {
  constexpr int kGreatest = std::numeric_limits<int>::max();
  int number = 0;
  for (; Ascii::IsDigit(*at); ++at) {
    const int digit = Ascii::HexDigitValue(*at);
    number = number > (kGreatest - digit) / 10 ? kGreatest : number * 10 + digit;
  }
  return number;
}

PrintfSize ParseSize(const wchar_t*& at) noexcept {
  constexpr struct {
    std::wstring_view prefix;
    PrintfSize size;
  } kPrefixes[] = {{L"hh", PrintfSize::Char},   {L"h", PrintfSize::Short},   {L"ll", PrintfSize::Int64},
                   {L"l", PrintfSize::Long},    {L"w", PrintfSize::Wide},    {L"I64", PrintfSize::Int64},
                   {L"I32", PrintfSize::Int32}, {L"I", PrintfSize::Pointer}, {L"z", PrintfSize::Pointer},
                   {L"t", PrintfSize::Pointer}, {L"j", PrintfSize::Int64},   {L"L", PrintfSize::LongDouble}};
  for (const auto& entry : kPrefixes) {
    if (Skip(at, entry.prefix)) {
      return entry.size;
    }
  }
  return PrintfSize::Default;
}

bool Fits(PrintfSize size, wchar_t conversion) noexcept {
  switch (size) {
    case PrintfSize::Default:
      return Contains(kIntegers, conversion) || Contains(kReals, conversion) || Contains(kTexts, conversion) ||
             conversion == L'p' || conversion == L'n';
    case PrintfSize::Short:
      return Contains(kIntegers, conversion) || Contains(kTexts, conversion) || conversion == L'n';
    case PrintfSize::Long:
      return Contains(kIntegers, conversion) || Contains(kReals, conversion) || Contains(kTexts, conversion) ||
             conversion == L'n';
    case PrintfSize::Wide:
      return Contains(kTexts, conversion);
    case PrintfSize::LongDouble:
      return Contains(kReals, conversion);
    case PrintfSize::Char:
    case PrintfSize::Int32:
    case PrintfSize::Int64:
    case PrintfSize::Pointer:
      return Contains(kIntegers, conversion) || conversion == L'n';
  }
  return false;
}

}  // namespace

bool PrintfSpec::IsText() const noexcept {
  return conversion == L's' || conversion == L'S';
}

bool PrintfSpec::IsReal() const noexcept {
  return Contains(kReals, conversion);
}

bool PrintfSpec::TakesNarrowText() const noexcept {
  if (size == PrintfSize::Default) {
    return conversion == L'S' || conversion == L'C';
  }
  return size == PrintfSize::Short;
}

PrintfArgument PrintfSpec::Argument() const noexcept {
  if (IsText() || conversion == L'p' || conversion == L'n') {
    return PrintfArgument::Pointer;
  }
  if (IsReal()) {
    return size == PrintfSize::LongDouble ? PrintfArgument::LongDouble : PrintfArgument::Double;
  }
  if (size == PrintfSize::Int64) {
    return PrintfArgument::Int64;
  }
  return size == PrintfSize::Pointer ? PrintfArgument::PointerSize : PrintfArgument::Int32;
}

void PrintfSpec::SetWidth(int value) noexcept {
  if (value >= 0) {
    width = value;
    return;
  }
  left = true;
  width = value == std::numeric_limits<int>::min() ? std::numeric_limits<int>::max() : -value;
}

void PrintfSpec::SetPrecision(int value) noexcept {
  precision = value >= 0 ? value : kNoPrecision;
}

bool PrintfSpec::IsWithinLimits() const noexcept {
  return width <= kMaximumField && (precision <= kMaximumField || IsText());
}

bool ParsePrintfSpec(const wchar_t*& at, PrintfSpec& spec) noexcept {
  spec = {};
  ParseFlags(at, spec);
  spec.width_from_argument = Skip(at, L"*");
  if (!spec.width_from_argument) {
    spec.width = ParseNumber(at);
  }
  if (Skip(at, L".")) {
    spec.precision_from_argument = Skip(at, L"*");
    if (!spec.precision_from_argument) {
      spec.precision = ParseNumber(at);
    }
  }
  spec.size = ParseSize(at);
  spec.conversion = *at;
  if (!Fits(spec.size, spec.conversion)) {
    return false;
  }
  ++at;
  return spec.IsWithinLimits();
}

}  // namespace Zelto::Utilities
