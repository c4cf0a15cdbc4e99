#include "zelto/text/printf_field.h"
#include "zelto/text/printf_spec.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <string>
#include <string_view>

namespace Zelto::Utilities {
namespace {

struct Arguments {
  std::va_list list;
};

// The length of the plain text up to the next "%" or the end.
std::size_t PlainLength(const wchar_t* format) noexcept {
  return std::wcscspn(format, L"%");
}

bool IsValid(const wchar_t* format) noexcept {
  for (format += PlainLength(format); *format != 0; format += PlainLength(format)) {
    ++format;
    PrintfSpec spec;
    if (*format == L'%') {
      ++format;
    } else if (!ParsePrintfSpec(format, spec)) {
      return false;
    }
  }
  return true;
}

PrintfValue Fetch(Arguments& arguments, PrintfArgument kind) {
  PrintfValue value;
  switch (kind) {
    // NOLINTNEXTLINE(bugprone-branch-clone): what is fetched has different types
    case PrintfArgument::Int32:
      value.bits = va_arg(arguments.list, unsigned);
      break;
    case PrintfArgument::Int64:
      value.bits = va_arg(arguments.list, unsigned long long);
      break;
    case PrintfArgument::PointerSize:
      value.bits = va_arg(arguments.list, std::size_t);
      break;
    case PrintfArgument::Double:
      value.real = va_arg(arguments.list, double);
      break;
    case PrintfArgument::LongDouble:
      value.real = static_cast<double>(va_arg(arguments.list, long double));
      break;
    case PrintfArgument::Pointer:
      value.bits = reinterpret_cast<std::uintptr_t>(va_arg(arguments.list, const void*));
      break;
  }
  return value;
}

// The format is a valid one: nothing is fetched for a format that breaks later.
std::wstring Format(const wchar_t* format, Arguments& arguments) {
  std::wstring result;
  while (*format != 0) {
    const std::size_t plain = PlainLength(format);
    if (!AppendUnits(result, std::wstring_view(format, plain))) {
      return {};
    }
    format += plain;
    if (*format == 0) {
      break;
    }
    ++format;
    if (*format == L'%') {
      result.push_back(*format++);
      continue;
    }
    PrintfSpec spec;
    ParsePrintfSpec(format, spec);
    if (spec.width_from_argument) {
      spec.SetWidth(va_arg(arguments.list, int));
    }
    if (spec.precision_from_argument) {
      spec.SetPrecision(va_arg(arguments.list, int));
    }
    if (!AppendField(result, spec, Fetch(arguments, spec.Argument()))) {
      return {};
    }
  }
  result.resize(std::min(result.find(L'\0'), result.size()));
  return result;
}

}  // namespace

std::wstring StringUtilities::SafeSprintf(const wchar_t* format, ...) {
  if (format == nullptr || !IsValid(format)) {
    return {};
  }
  Arguments arguments;
  va_start(arguments.list, format);
  std::wstring result;
  try {
    result = Format(format, arguments);
  } catch (...) {
    va_end(arguments.list);
    throw;
  }
  va_end(arguments.list);
  return result;
}

}  // namespace Zelto::Utilities
