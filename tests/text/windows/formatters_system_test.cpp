// The messages of the library against those of the system.
#include "zelto/text/string_utilities.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

namespace Zelto::Utilities {
namespace {

std::wstring SystemMessage(const wchar_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  wchar_t buffer[4096] = {};
  const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_STRING, format, 0, 0, buffer, 4096, &arguments);
  va_end(arguments);
  return std::wstring(buffer, length);
}

template <typename... Arguments>
void CompareMessage(const wchar_t* format, Arguments... arguments) {
  EXPECT_EQ(StringUtilities::FormatMessageW(format, arguments...), SystemMessage(format, arguments...));
}

TEST(SystemFormatters, MessagesAgree) {
  CompareMessage(L"%1 %2!d! %3", L"a", 5, L"c");
  CompareMessage(L"%%%n%r%t%.% .%.!%!|%x%;");
  CompareMessage(L"a\nb\rc\r\nd%n%0x");
  CompareMessage(L"ab%");
  CompareMessage(L"%1!d", 5);
  CompareMessage(L"%1!!", 5);
  CompareMessage(L"%1!d items!", 5);
  CompareMessage(L"%1!*.*s! %3 %4!*s!", 4, 2, L"Bill", L"Bob", 6, L"Bill");
  CompareMessage(L"%1!*d!|%2!d!|%1!d!", 5, 42, 43);
  CompareMessage(L"%2!d!,%1!*d!,%1!d!,%2!d!,%3!d!", 2, 3, 4, 5, 6);
  CompareMessage(L"%1!*.*s!|%1!*.*s!|%2", 3, 1, L"abc", L"def", L"ghi");
  CompareMessage(L"%1%3%1", L"a", 7, L"c");
  CompareMessage(L"%123", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, L"twelve");
  CompareMessage(L"%1!05d!|%1!x!|%1!I64x!|%2!S!|%3!hs!|%4!c!|%5", 0xABCLL, "n", "m", L'w', nullptr);
  for (const std::size_t length : {4095U, 4096U}) {
    CompareMessage(std::wstring(length, L'x').c_str());
    CompareMessage(L"%1", std::wstring(length, L'y').c_str());
  }
}

}  // namespace
}  // namespace Zelto::Utilities
