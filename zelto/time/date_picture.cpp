#include "zelto/time/date_picture.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Zelto::Utilities::DatePicture {
namespace {

constexpr std::array<std::wstring_view, 7> kDays = {L"Sunday",   L"Monday", L"Tuesday", L"Wednesday",
                                                    L"Thursday", L"Friday", L"Saturday"};
constexpr std::array<std::wstring_view, 12> kMonths = {L"January",   L"February", L"March",    L"April",
                                                       L"May",       L"June",     L"July",     L"August",
                                                       L"September", L"October",  L"November", L"December"};
constexpr std::size_t kShortName = 3;
constexpr wchar_t kQuote = L'\'';

void AppendNumber(unsigned value, std::size_t minimum_digits, std::wstring& text) {
  std::array<wchar_t, 10> digits;
  std::size_t first = digits.size();
  do {
    digits[--first] = static_cast<wchar_t>(L'0' + value % 10);
    value /= 10;
  } while (value != 0 || digits.size() - first < minimum_digits);
  text.append(digits.data() + first, digits.size() - first);
}

// One letter: the number itself; two or more: with two digits.
void AppendShortNumber(unsigned value, std::size_t count, std::wstring& text) {
  AppendNumber(value, std::min<std::size_t>(count, 2), text);
}

// Up to two letters a number, three the short name, four the whole name.
void AppendNamed(unsigned value, std::wstring_view name, std::size_t count, std::wstring& text) {
  if (count < 3) {
    AppendShortNumber(value, count, text);
  } else {
    text += count == 3 ? name.substr(0, kShortName) : name;
  }
}

bool AppendDateField(const Platform::CalendarFields& fields, wchar_t letter, std::size_t count, std::wstring& text) {
  switch (letter) {
    case L'd':
      AppendNamed(fields.day, kDays[fields.day_of_week % kDays.size()], count, text);
      return true;
    case L'M':
      AppendNamed(fields.month, kMonths[(fields.month + 11U) % kMonths.size()], count, text);
      return true;
    case L'y':
      if (count < 3) {
        AppendShortNumber(fields.year % 100U, count, text);
      } else {
        AppendNumber(fields.year, 4, text);
      }
      return true;
    default:
      return false;
  }
}

bool AppendTimeField(const Platform::CalendarFields& fields, wchar_t letter, std::size_t count, std::wstring& text) {
  switch (letter) {
    case L'h':
      AppendShortNumber((fields.hour + 11U) % 12U + 1U, count, text);
      return true;
    case L'H':
      AppendShortNumber(fields.hour, count, text);
      return true;
    case L'm':
      AppendShortNumber(fields.minute, count, text);
      return true;
    case L's':
      AppendShortNumber(fields.second, count, text);
      return true;
    case L't':
      text += fields.hour < 12 ? L'A' : L'P';
      if (count > 1) {
        text += L'M';
      }
      return true;
    default:
      return false;
  }
}

// Appends what stands in quotes, from behind the opening quote; returns the position behind the closing one.
std::size_t AppendQuoted(std::wstring_view picture, std::size_t at, std::wstring& text) {
  for (; at < picture.size(); ++at) {
    if (picture[at] == kQuote) {
      if (at + 1 == picture.size() || picture[at + 1] != kQuote) {
        return at + 1;
      }
      ++at;
    }
    text += picture[at];
  }
  return at;
}

template <typename AppendField>
void Append(const Platform::CalendarFields& fields, std::wstring_view picture, std::wstring& text,
            AppendField append_field) {
  for (std::size_t at = 0; at < picture.size();) {
    const wchar_t letter = picture[at];
    if (letter == kQuote) {
      at = AppendQuoted(picture, at + 1, text);
      continue;
    }
    const std::size_t end = std::min(picture.find_first_not_of(letter, at), picture.size());
    if (!append_field(fields, letter, end - at, text)) {
      text.append(end - at, letter);
    }
    at = end;
  }
}

wchar_t* PutTwoDigits(wchar_t* to, unsigned value) noexcept {
  to[0] = static_cast<wchar_t>(L'0' + value / 10);
  to[1] = static_cast<wchar_t>(L'0' + value % 10);
  return to + 2;
}

}  // namespace

void AppendDate(const Platform::CalendarFields& fields, std::wstring_view picture, std::wstring& text) {
  Append(fields, picture, text, AppendDateField);
}

void AppendTime(const Platform::CalendarFields& fields, std::wstring_view picture, std::wstring& text) {
  Append(fields, picture, text, AppendTimeField);
}

std::wstring FormatFixed(const Platform::CalendarFields& fields, wchar_t separator) {
  std::array<wchar_t, 20> text;
  wchar_t* to = text.data();
  unsigned year = fields.year;
  if (year >= 10'000) {
    *to++ = static_cast<wchar_t>(L'0' + year / 10'000);
    year %= 10'000;
  }
  to = PutTwoDigits(to, year / 100);
  to = PutTwoDigits(to, year % 100);
  *to++ = L'-';
  to = PutTwoDigits(to, fields.month);
  *to++ = L'-';
  to = PutTwoDigits(to, fields.day);
  *to++ = separator;
  to = PutTwoDigits(to, fields.hour);
  *to++ = L':';
  to = PutTwoDigits(to, fields.minute);
  *to++ = L':';
  to = PutTwoDigits(to, fields.second);
  return std::wstring(text.data(), to);
}

}  // namespace Zelto::Utilities::DatePicture
