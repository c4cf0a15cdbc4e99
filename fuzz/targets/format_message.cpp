// `FormatMessageW` with any format and as many arguments as it asks for. The input is the format, a zero byte, and what
// the values are made of.
#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "fuzz/models/printf.h"
#include "fuzz/models/utf.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Utilities::StringUtilities;

constexpr std::size_t kMaximumLength = 4095;
constexpr wchar_t kText[] = L"text of an insert";

// A message's walk through its format. The first one finds out which arguments are texts, the second one prints.
class Message {
 public:
  explicit Message(const Arguments* arguments) : arguments_(arguments), is_text_(Arguments::kWords) {}

  bool Walk(std::wstring_view format) {
    while (!format.empty() && text_.size() <= kMaximumLength) {
      const wchar_t unit = format[0];
      format.remove_prefix(1);
      if (unit == L'\r' || unit == L'\n') {
        format.remove_prefix(unit == L'\r' && format.starts_with(L'\n') ? 1 : 0);
        text_ += L"\r\n";
      } else if (unit != L'%') {
        Append(InUnits({&unit, 1}));
      } else if (format.empty()) {
        return false;
      } else if (format[0] == L'0') {
        break;
      } else if (format[0] >= L'1' && format[0] <= L'9') {
        valid_ = Insert(format) && valid_;
      } else {
        Escape(format[0]);
        format.remove_prefix(1);
      }
      if (!valid_) {
        return false;
      }
    }
    return text_.size() <= kMaximumLength;
  }

  bool HasEnough() const { return used_ <= Arguments::kWords; }
  bool IsText(std::size_t word) const { return is_text_[word]; }
  const std::wstring& Text() const { return text_; }

 private:
  void Append(const std::optional<std::wstring>& text) {
    valid_ = valid_ && text.has_value();
    text_ += text.value_or(L"");
  }

  void Escape(wchar_t unit) {
    switch (unit) {
      case L'n':
        text_ += L"\r\n";
        break;
      case L'r':
        text_ += L'\r';
        break;
      case L't':
        text_ += L'\t';
        break;
      case L'b':
        text_ += L' ';
        break;
      default:
        Append(InUnits({&unit, 1}));
        break;
    }
  }

  // The word behind a number; those up to it are used in turn.
  std::size_t WordOf(std::size_t number) {
    while (numbered_.size() < number) {
      numbered_.push_back(used_++);
    }
    return numbered_[number - 1];
  }

  std::uint64_t ValueOf(std::size_t word) const {
    return arguments_ != nullptr && word < Arguments::kWords ? arguments_->words[word] : 0;
  }

  bool Insert(std::wstring_view& format) {
    std::size_t number = 0;
    for (int digit = 0; digit < 2 && !format.empty() && format[0] >= L'0' && format[0] <= L'9'; ++digit) {
      number = number * 10 + static_cast<std::size_t>(format[0] - L'0');
      format.remove_prefix(1);
    }
    Conversion conversion;
    conversion.letter = L's';
    std::wstring_view plain;
    if (format.starts_with(L'!')) {
      format.remove_prefix(1);
      const std::optional<Conversion> taken = TakeConversion(format);
      const std::size_t end = std::min(format.find_first_of(L"!%"), format.size());
      if (!taken || taken->IsReal() || end == format.size() || format[end] == L'%') {
        return false;
      }
      conversion = *taken;
      plain = format.substr(0, end);
      format.remove_prefix(end + 1);
    }
    std::size_t word = WordOf(number);
    if (conversion.star_width) {
      conversion.SetWidth(static_cast<std::int32_t>(ValueOf(word)));
      if (conversion.star_precision) {
        word = WordOf(numbered_.size() + 1);
      }
    }
    if (conversion.star_precision) {
      conversion.SetPrecision(static_cast<std::int32_t>(ValueOf(word)));
    }
    if (conversion.star_width || conversion.star_precision) {
      numbered_.pop_back();
      word = WordOf(numbered_.size() + 1);
    }
    if (conversion.IsText() && word < Arguments::kWords) {
      is_text_[word] = true;
    }
    if (arguments_ != nullptr) {
      Append(Print(conversion, ValueOf(word), 0));
      Append(InUnits(plain));
    }
    return true;
  }

  const Arguments* arguments_;
  std::vector<bool> is_text_;
  std::vector<std::size_t> numbered_;
  std::size_t used_ = 0;
  std::wstring text_;
  bool valid_ = true;
};

void Run(Bytes bytes) {
  const auto length = static_cast<std::size_t>(std::find(bytes.begin(), bytes.end(), 0) - bytes.begin());
  std::vector<wchar_t> format = LenientText(bytes.first(length));
  format.push_back(0);
  format.shrink_to_fit();
  const std::wstring_view view(format.data());

  Message first(nullptr);
  const bool well_formed = first.Walk(view);
  if (!first.HasEnough()) {
    return;
  }
  Input values(bytes.subspan(std::min(length + 1, bytes.size())));
  Arguments arguments;
  for (std::size_t i = 0; i < Arguments::kWords; ++i) {
    const std::uint8_t choice = values.Byte();
    const std::uint64_t number = choice < 0xF0 ? choice : values.Number() * std::uint64_t{0x100000001};
    arguments.words[i] = first.IsText(i) ? reinterpret_cast<std::uintptr_t>(choice == 0xFF ? nullptr : kText) : number;
  }
  Message second(&arguments);
  const std::wstring expected = well_formed && second.Walk(view) ? second.Text() : L"";
  Require(arguments.Call(StringUtilities::FormatMessageW, format.data()) == expected, "the message is as described");
}

const Target target("format_message", Run);

}  // namespace
}  // namespace Zelto::Fuzz
