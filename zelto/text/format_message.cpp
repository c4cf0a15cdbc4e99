#include "zelto/text/ascii.h"
#include "zelto/text/printf_field.h"
#include "zelto/text/printf_spec.h"
#include "zelto/text/string_utilities.h"

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelto::Utilities {
namespace {

constexpr std::size_t kMaximumLength = 4095;  // a buffer of 4096 units with its zero

struct VariableArguments {
  std::va_list list;
};

// The arguments of a message by number, fetched in order and no further than asked for. Each takes one slot as wide as
// a pointer, whatever it holds, so one that no insert names can be passed over.
class InsertArguments {
 public:
  explicit InsertArguments(VariableArguments& arguments) : arguments_(arguments) {}

  std::uintptr_t At(std::size_t number) {
    while (fetched_.size() < number) {
      // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has started the list
      fetched_.push_back(va_arg(arguments_.list, std::uintptr_t));
    }
    return fetched_[number - 1];
  }

  std::uintptr_t Next() { return At(fetched_.size() + 1); }

  // The system's formatter gives the argument behind a width or precision the number of the latter: behind
  // L"%1!*d!" the next one is %2.
  void DropLast() noexcept { fetched_.pop_back(); }

 private:
  VariableArguments& arguments_;
  std::vector<std::uintptr_t> fetched_;
};

// An insert behind its "%": the number, the conversion and plain text that stands with it between two "!".
struct Insert {
  std::size_t number = 0;
  PrintfSpec spec;
  const wchar_t* plain = nullptr;
  std::size_t plain_length = 0;
};

bool ParseInsert(const wchar_t*& at, Insert& insert) noexcept {
  insert.number = static_cast<std::size_t>(Ascii::HexDigitValue(*at++));
  if (Ascii::IsDigit(*at)) {
    insert.number = insert.number * 10 + static_cast<std::size_t>(Ascii::HexDigitValue(*at++));
  }
  if (*at != L'!') {
    insert.spec.conversion = L's';
    return true;
  }
  ++at;
  // A real number lies elsewhere among the arguments than the rest; the system's formatter has none either.
  if (!ParsePrintfSpec(at, insert.spec) || insert.spec.IsReal()) {
    return false;
  }
  insert.plain = at;
  insert.plain_length = std::wcscspn(at, L"!%");
  at += insert.plain_length;
  return *at++ == L'!';
}

class MessageFormatter {
 public:
  explicit MessageFormatter(InsertArguments* arguments) : arguments_(arguments) {}

  // Without arguments only checks the message. False when it is not valid or too long.
  bool Run(const wchar_t* at) {
    while (*at != 0 && result_.size() <= kMaximumLength) {
      const std::size_t plain = std::wcscspn(at, L"%\r\n");
      if (!Append(at, plain)) {
        return false;
      }
      at += plain;
      if (*at == L'%') {
        ++at;
        if (*at == L'0') {
          break;
        }
        if (!Escape(at)) {
          return false;
        }
      } else if (*at != 0) {
        at += at[0] == L'\r' && at[1] == L'\n' ? 2 : 1;
        result_ += L"\r\n";
      }
    }
    return result_.size() <= kMaximumLength;
  }

  std::wstring TakeResult() { return std::move(result_); }

 private:
  bool Append(const wchar_t* text, std::size_t length) { return AppendUnits(result_, std::wstring_view(text, length)); }

  bool Escape(const wchar_t*& at) {
    if (Ascii::IsDigit(*at)) {
      Insert insert;
      return ParseInsert(at, insert) && (arguments_ == nullptr || AppendInsert(insert));
    }
    switch (*at) {
      case 0:
        return false;
      case L'n':
        result_ += L"\r\n";
        break;
      case L'r':
        result_ += L'\r';
        break;
      case L't':
        result_ += L'\t';
        break;
      case L'b':
        result_ += L' ';
        break;
      default:
        if (!Append(at, 1)) {
          return false;
        }
        break;
    }
    ++at;
    return true;
  }

  bool AppendInsert(Insert& insert) {
    const bool more = insert.spec.width_from_argument || insert.spec.precision_from_argument;
    std::uintptr_t argument = arguments_->At(insert.number);
    if (insert.spec.width_from_argument) {
      insert.spec.SetWidth(static_cast<int>(argument));
      if (insert.spec.precision_from_argument) {
        argument = arguments_->Next();
      }
    }
    if (insert.spec.precision_from_argument) {
      insert.spec.SetPrecision(static_cast<int>(argument));
    }
    if (more) {
      arguments_->DropLast();
      argument = arguments_->Next();
    }
    return AppendField(result_, insert.spec, {argument, 0}) && Append(insert.plain, insert.plain_length);
  }

  InsertArguments* arguments_;
  std::wstring result_;
};

}  // namespace

std::wstring StringUtilities::FormatMessageW(const wchar_t* format, ...) {
  if (format == nullptr || !MessageFormatter(nullptr).Run(format)) {
    return {};
  }
  VariableArguments arguments;
  va_start(arguments.list, format);
  std::wstring result;
  try {
    InsertArguments inserts(arguments);
    MessageFormatter formatter(&inserts);
    if (formatter.Run(format)) {
      result = formatter.TakeResult();
    }
  } catch (...) {
    va_end(arguments.list);
    throw;
  }
  va_end(arguments.list);
  return result;
}

}  // namespace Zelto::Utilities
