#include "zelto/platform/locale_text.h"

#include <windows.h>

#include <bit>
#include <utility>

namespace Zelto::Platform {
namespace {

using Formatter = int(WINAPI*)(LCID, DWORD, const SYSTEMTIME*, LPCWSTR, LPWSTR, int);

ErrorCode Format(Formatter formatter, LocaleId locale, const CalendarFields& fields, std::wstring& text) {
  const auto time = std::bit_cast<SYSTEMTIME>(fields);
  const int size = formatter(locale, 0, &time, nullptr, nullptr, 0);  // with the zero unit behind the text
  if (size <= 0) {
    return ::GetLastError();
  }
  std::wstring result(static_cast<std::size_t>(size), L'\0');
  const int written = formatter(locale, 0, &time, nullptr, result.data(), size);
  if (written <= 0) {
    return ::GetLastError();
  }
  result.resize(static_cast<std::size_t>(written) - 1);
  text = std::move(result);
  return kSuccess;
}

}  // namespace

ErrorCode FormatLocaleDate(LocaleId locale, const CalendarFields& fields, std::wstring& text) {
  return Format(&::GetDateFormatW, locale, fields, text);
}

ErrorCode FormatLocaleTime(LocaleId locale, const CalendarFields& fields, std::wstring& text) {
  return Format(&::GetTimeFormatW, locale, fields, text);
}

}  // namespace Zelto::Platform
