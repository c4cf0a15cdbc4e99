#include "zelto/text/printf_field.h"

#include "zelto/text/ascii.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace Zelto::Utilities {
namespace {

// What stands in front of the padding zeros of a number, and what behind.
struct Number {
  std::string prefix;
  std::string digits;
  bool zeros_fill = true;
};

bool IsUpper(wchar_t conversion) noexcept {
  return conversion >= L'A' && conversion <= L'Z';
}

void ToUpper(std::string& text) noexcept {
  std::transform(text.begin(), text.end(), text.begin(), Ascii::ToUpper<char>);
}

void AppendSign(std::string& prefix, const PrintfSpec& spec, bool negative) {
  if (negative) {
    prefix += '-';
  } else if (spec.plus || spec.blank) {
    prefix += spec.plus ? '+' : ' ';
  }
}

std::uint64_t CutToSize(const PrintfSpec& spec, std::uint64_t bits) noexcept {
  switch (spec.size) {
    case PrintfSize::Char:
      return static_cast<std::uint8_t>(bits);
    case PrintfSize::Short:
      return static_cast<std::uint16_t>(bits);
    case PrintfSize::Int64:
      return bits;
    case PrintfSize::Pointer:
      return static_cast<std::uintptr_t>(bits);
    default:
      return static_cast<std::uint32_t>(bits);
  }
}

std::int64_t SignedOfSize(const PrintfSpec& spec, std::uint64_t bits) noexcept {
  switch (spec.size) {
    case PrintfSize::Char:
      return static_cast<std::int8_t>(bits);
    case PrintfSize::Short:
      return static_cast<std::int16_t>(bits);
    case PrintfSize::Int64:
      return static_cast<std::int64_t>(bits);
    case PrintfSize::Pointer:
      return static_cast<std::intptr_t>(bits);
    default:
      return static_cast<std::int32_t>(bits);
  }
}

std::string DigitsOf(std::uint64_t value, int base) {
  char buffer[24];  // 22 octal digits are the most
  const auto result = std::to_chars(std::begin(buffer), std::end(buffer), value, base);
  return std::string(buffer, result.ptr);
}

Number IntegerOf(const PrintfSpec& spec, std::uint64_t bits) {
  Number number;
  std::uint64_t value = CutToSize(spec, bits);
  int base = 10;
  if (spec.conversion == L'd' || spec.conversion == L'i') {
    const std::int64_t with_sign = SignedOfSize(spec, bits);
    AppendSign(number.prefix, spec, with_sign < 0);
    value = with_sign < 0 ? 0 - static_cast<std::uint64_t>(with_sign) : static_cast<std::uint64_t>(with_sign);
  } else if (spec.conversion == L'o') {
    base = 8;
  } else if (spec.conversion == L'x' || spec.conversion == L'X') {
    base = 16;
    if (spec.alternate && value != 0) {
      number.prefix += "0x";
    }
  }
  if (value != 0 || spec.precision != 0) {
    number.digits = DigitsOf(value, base);
  }
  const auto least = static_cast<std::size_t>(std::max(spec.precision, 0));
  if (number.digits.size() < least) {
    number.digits.insert(0, least - number.digits.size(), '0');
  }
  if (base == 8 && spec.alternate && !number.digits.starts_with('0')) {
    number.digits.insert(0, 1, '0');
  }
  if (spec.conversion == L'X') {
    ToUpper(number.prefix);
    ToUpper(number.digits);
  }
  number.zeros_fill = spec.precision == PrintfSpec::kNoPrecision;
  return number;
}

// `std::to_chars` writes what printf writes in the "C" locale, whatever the locale is.
std::string RealText(double magnitude, std::chars_format format, int precision) {
  constexpr std::size_t kMostWithoutFraction = 330;  // 309 digits before the point
  std::string text(kMostWithoutFraction + static_cast<std::size_t>(precision), '\0');
  const auto result = std::to_chars(text.data(), text.data() + text.size(), magnitude, format, precision);
  text.resize(static_cast<std::size_t>(result.ptr - text.data()));
  return text;
}

void EnsurePoint(std::string& text, char exponent) {
  if (text.find('.') == std::string::npos) {
    text.insert(std::min(text.find(exponent), text.size()), 1, '.');
  }
}

// "%#g" keeps the zeros at the end, so it chooses its form here.
std::string GeneralWithZeros(double magnitude, int precision) {
  std::string scientific = RealText(magnitude, std::chars_format::scientific, precision - 1);
  const std::size_t mark = scientific.find('e');
  int exponent = 0;
  const bool negative = scientific[mark + 1] == '-';
  std::from_chars(scientific.data() + mark + 2, scientific.data() + scientific.size(), exponent);
  exponent = negative ? -exponent : exponent;
  if (exponent < -4 || exponent >= precision) {
    return scientific;
  }
  return RealText(magnitude, std::chars_format::fixed, precision - 1 - exponent);
}

std::string DigitsOfReal(const PrintfSpec& spec, double magnitude) {
  constexpr int kDefaultPrecision = 6;
  constexpr int kDefaultHexPrecision = 13;  // all digits of a number, zeros at the end included
  const wchar_t conversion = Ascii::ToLower(spec.conversion);
  const int default_precision = conversion == L'a' ? kDefaultHexPrecision : kDefaultPrecision;
  const int precision = spec.precision == PrintfSpec::kNoPrecision ? default_precision : spec.precision;
  std::string text;
  char exponent = 'e';
  switch (conversion) {
    case L'e':
      text = RealText(magnitude, std::chars_format::scientific, precision);
      break;
    case L'f':
      text = RealText(magnitude, std::chars_format::fixed, precision);
      break;
    case L'g':
      text = spec.alternate ? GeneralWithZeros(magnitude, std::max(precision, 1))
                            : RealText(magnitude, std::chars_format::general, precision);
      break;
    default:
      text = RealText(magnitude, std::chars_format::hex, precision);
      exponent = 'p';
      break;
  }
  if (spec.alternate) {
    EnsurePoint(text, exponent);
  }
  return text;
}

Number RealOf(const PrintfSpec& spec, double value) {
  Number number;
  AppendSign(number.prefix, spec, std::signbit(value));
  if (!std::isfinite(value)) {
    number.digits += std::isnan(value) ? "nan" : "inf";
    number.zeros_fill = false;
  } else {
    if (Ascii::ToLower(spec.conversion) == L'a') {
      number.prefix += "0x";
    }
    number.digits = DigitsOfReal(spec, std::fabs(value));
  }
  if (IsUpper(spec.conversion)) {
    ToUpper(number.prefix);
    ToUpper(number.digits);
  }
  return number;
}

Number PointerOf(const PrintfSpec& spec, std::uint64_t bits) {
  PrintfSpec digits = spec;
  digits.conversion = L'X';
  digits.size = PrintfSize::Pointer;
  digits.precision = 2 * sizeof(void*);
  digits.alternate = false;
  return IntegerOf(digits, bits);
}

// `length` is what has been appended behind `start`; blanks or zeros bring it to the width.
void Pad(std::wstring& target, std::size_t start, const PrintfSpec& spec, std::size_t prefix, bool zeros) {
  const std::size_t length = target.size() - start;
  const auto width = static_cast<std::size_t>(spec.width);
  if (length >= width) {
    return;
  }
  if (spec.left) {
    target.append(width - length, L' ');
  } else if (zeros && spec.zero) {
    target.insert(start + prefix, width - length, L'0');
  } else {
    target.insert(start, width - length, L' ');
  }
}

void AppendNarrow(std::wstring& target, std::string_view text) {
  for (const char byte : text) {
    target.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
  }
}

void AppendNumber(std::wstring& target, const PrintfSpec& spec, const Number& number) {
  const std::size_t start = target.size();
  AppendNarrow(target, number.prefix);
  AppendNarrow(target, number.digits);
  Pad(target, start, spec, number.prefix.size(), number.zeros_fill);
}

// At most `most` units, and nothing is read behind them.
bool AppendWideText(std::wstring& target, const wchar_t* text, std::size_t most) {
  const std::size_t start = target.size();
  for (; target.size() - start < most && *text != 0; ++text) {
    if (!AppendUnits(target, std::wstring_view(text, 1))) {
      return false;
    }
  }
  target.resize(std::min(target.size() - start, most) + start);
  return true;
}

bool AppendText(std::wstring& target, const PrintfSpec& spec, const void* text) {
  const std::size_t start = target.size();
  // Without a precision the text ends with its zero; with one it need not have a zero.
  const std::size_t most =
      spec.precision == PrintfSpec::kNoPrecision ? std::wstring::npos : static_cast<std::size_t>(spec.precision);
  bool valid = true;
  if (text == nullptr) {
    AppendNarrow(target, std::string_view("(null)").substr(0, most));
  } else if (spec.TakesNarrowText()) {
    const char* const bytes = static_cast<const char*>(text);
    for (std::size_t i = 0; i < most && bytes[i] != '\0'; ++i) {
      target.push_back(static_cast<wchar_t>(static_cast<unsigned char>(bytes[i])));
    }
  } else {
    valid = AppendWideText(target, static_cast<const wchar_t*>(text), most);
  }
  Pad(target, start, spec, 0, true);
  return valid;
}

bool AppendCharacter(std::wstring& target, const PrintfSpec& spec, std::uint64_t bits) {
  const std::size_t start = target.size();
  const auto character =
      static_cast<wchar_t>(spec.TakesNarrowText() ? static_cast<std::uint8_t>(bits) : static_cast<std::uint32_t>(bits));
  const bool valid = AppendUnits(target, std::wstring_view(&character, 1));
  Pad(target, start, spec, 0, true);
  return valid;
}

}  // namespace

bool AppendUnits(std::wstring& target, std::wstring_view text) {
  for (const wchar_t character : text) {
    if (ValueOf(character) > kMaximumCodePoint) {
      return false;
    }
    ForEachUnit(character, [&target](char16_t unit) { target.push_back(static_cast<wchar_t>(unit)); });
  }
  return true;
}

bool AppendField(std::wstring& target, const PrintfSpec& spec, const PrintfValue& value) {
  if (!spec.IsWithinLimits()) {
    return false;
  }
  switch (spec.conversion) {
    case L'n':
      return true;  // where to write is taken and not used: a format from elsewhere must not write to memory
    case L's':
    case L'S':
      return AppendText(target, spec, reinterpret_cast<const void*>(static_cast<std::uintptr_t>(value.bits)));
    case L'c':
    case L'C':
      return AppendCharacter(target, spec, value.bits);
    case L'p':
      AppendNumber(target, spec, PointerOf(spec, value.bits));
      return true;
    default:
      AppendNumber(target, spec, spec.IsReal() ? RealOf(spec, value.real) : IntegerOf(spec, value.bits));
      return true;
  }
}

}  // namespace Zelto::Utilities
