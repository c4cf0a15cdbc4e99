// `SafeSprintf` with any format and arguments that suit it. The input is the format, a zero byte, and what the values
// are made of.
#include "fuzz/models/printf.h"

#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "fuzz/models/utf.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"
#include "zelto/time/version.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Utilities::StringUtilities;

constexpr std::array<std::int32_t, 8> kStars{65535, 65536, -65535, -65536, 2147483647, -2147483647 - 1, 1000, -1000};
constexpr std::size_t kLongestFormat = 512;

// What a format prints, and the arguments that it asks for.
class Call {
 public:
  Call(std::wstring_view format, Input& values) : values_(values) {
    while (valid_ && !format.empty()) {
      const std::wstring_view plain = format.substr(0, format.find(L'%'));
      Append(InUnits(plain));
      format.remove_prefix(plain.size());
      if (format.empty()) {
        break;
      }
      format.remove_prefix(1);
      if (format.starts_with(L'%')) {
        expected_ += L'%';
        format.remove_prefix(1);
      } else if (std::optional<Conversion> conversion = TakeConversion(format)) {
        Convert(*conversion);
      } else {
        valid_ = false;
      }
    }
  }

  /// Whether the call can be made. Where a long double has a place of its own, words behind it are found elsewhere.
  bool IsSafe() const {
    return next_word_ <= Arguments::kWords && next_real_ <= Arguments::kReals && !(has_long_double_ && has_text_);
  }
  bool IsComparable() const { return comparable_ && !has_long_double_; }
  const Arguments& Values() const { return arguments_; }
  std::wstring Expected() const { return valid_ ? expected_.substr(0, expected_.find(L'\0')) : L""; }
  bool MemoryIsUntouched() const { return counter_ == 7; }

 private:
  void Append(const std::optional<std::wstring>& text) {
    valid_ = valid_ && text.has_value();
    expected_ += text.value_or(L"");
  }

  void Push(std::uint64_t word) {
    if (next_word_ < Arguments::kWords) {
      arguments_.words[next_word_] = word;
    }
    ++next_word_;
  }

  std::int32_t PushStar() {
    const std::uint8_t choice = values_.Byte();
    const std::int32_t value = choice < 0xF0 ? choice - 0x20 : kStars[choice % kStars.size()];
    Push(std::uint64_t{values_.Byte()} << 32 | static_cast<std::uint32_t>(value));
    return value;
  }

  void PushReal(const Conversion& conversion, double value) {
    if (conversion.size == L"L") {
      has_long_double_ = true;
      long_double_ = static_cast<long double>(value);
      if (Arguments::RealsAreWords()) {
        Push(reinterpret_cast<std::uintptr_t>(&long_double_));
      }
    } else if (Arguments::RealsAreWords()) {
      Push(std::bit_cast<std::uint64_t>(value));
    } else {
      if (next_real_ < Arguments::kReals) {
        arguments_.reals[next_real_] = value;
      }
      ++next_real_;
    }
  }

  // A text; without its zero where the precision makes up for it.
  std::uint64_t MakeText(const Conversion& conversion) {
    const std::uint8_t choice = values_.Byte();
    if (choice == 0xFF) {
      return 0;
    }
    const bool ends = conversion.precision < 0 || conversion.precision > 20;
    const std::size_t length = ends ? choice % 40U : static_cast<std::size_t>(conversion.precision);
    const Bytes letters = values_.Take(length);
    if (conversion.IsNarrow()) {
      std::vector<char>& text = narrow_.emplace_back(letters.begin(), letters.end());
      text.resize(length, 'n');
      text.insert(text.end(), ends ? 1 : 0, '\0');
      text.shrink_to_fit();
      return reinterpret_cast<std::uintptr_t>(text.data());
    }
    std::vector<wchar_t>& text = wide_.emplace_back(letters.begin(), letters.end());
    text.resize(length, L'\x4E2D');
    text.insert(text.end(), ends ? 1 : 0, L'\0');
    text.shrink_to_fit();
    return reinterpret_cast<std::uintptr_t>(text.data());
  }

  void Convert(Conversion& conversion) {
    if (conversion.star_width) {
      conversion.SetWidth(PushStar());
    }
    if (conversion.star_precision) {
      conversion.SetPrecision(PushStar());
    }
    std::uint64_t word = 0;
    double real = 0;
    if (conversion.letter == L'n') {
      word = reinterpret_cast<std::uintptr_t>(&counter_);
    } else if (conversion.IsText()) {
      word = MakeText(conversion);
      has_text_ = true;
    } else {
      word = values_.Number();
      word |= std::uint64_t{values_.Number()} << 32;
      real = std::bit_cast<double>(word);
    }
    if (conversion.IsReal()) {
      // The least numbers have more than one hexadecimal form.
      comparable_ = comparable_ && conversion.letter != L'a' && conversion.letter != L'A' && !std::isnan(real);
      PushReal(conversion, real);
    } else {
      Push(word);
    }
    Append(Print(conversion, word, real));
  }

  Input& values_;
  Arguments arguments_;
  std::size_t next_word_ = 0;
  std::size_t next_real_ = 0;
  std::wstring expected_;
  bool valid_ = true;
  bool comparable_ = true;
  bool has_text_ = false;
  bool has_long_double_ = false;
  long double long_double_ = 0;
  std::list<std::vector<char>> narrow_;
  std::list<std::vector<wchar_t>> wide_;
  std::uint64_t counter_ = 7;
};

// A version takes the formats that ask for nothing but its parts.
void PrintVersion(const wchar_t* format) {
  try {
    const std::wstring text = Utilities::Version(1, 22, 4294967295U, 0).ToString(format);
    Require(!text.empty() && text.size() <= 255, "a version's text has 1 to 255 units");
  } catch (const Utilities::Win32Exception& error) {
    Require(error.GetErrorCode() == 87, "a version refuses a format with code 87");
  }
}

void Run(Bytes bytes) {
  const auto end =
      std::find(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(bytes.size(), kLongestFormat)), 0);
  const auto length = static_cast<std::size_t>(end - bytes.begin());
  std::vector<wchar_t> format = LenientText(bytes.first(length));
  format.push_back(0);
  format.shrink_to_fit();
  PrintVersion(format.data());

  const std::wstring_view view(format.data());
  Input values(bytes.subspan(std::min(length + 1, bytes.size())));
  const Call call(view, values);
  if (!call.IsSafe()) {
    return;
  }
  const std::wstring text = call.Values().Call(StringUtilities::SafeSprintf, format.data());
  Require(!call.IsComparable() || text == call.Expected(), "the text is what the C library prints");
  Require(call.MemoryIsUntouched(), "nothing is written through an argument");
}

const Target target("printf", Run);

}  // namespace
}  // namespace Zelto::Fuzz
