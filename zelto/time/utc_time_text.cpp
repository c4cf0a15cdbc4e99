#include "zelto/platform/calendar.h"
#include "zelto/platform/locale_text.h"
#include "zelto/text/ascii.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"
#include "zelto/time/date_picture.h"
#include "zelto/time/iso8601.h"
#include "zelto/time/local_flag.h"
#include "zelto/time/utc_time.h"

#include <cstddef>
#include <stdexcept>

namespace Zelto::Utilities {
namespace {

constexpr std::size_t kHexFieldWidth = 8;
constexpr std::size_t kHexTextSize = 16;

// Reads one "%08x" from the front, as scanf does, and removes it. A lone sign or "0x" is no number.
bool TakeHexNumber(std::wstring_view& text, std::uint32_t& value) noexcept {
  std::size_t at = 0;
  while (at < text.size() && Ascii::IsSpace(text[at])) {
    ++at;
  }
  const std::size_t end = text.size() - at > kHexFieldWidth ? at + kHexFieldWidth : text.size();
  const bool negative = at < end && text[at] == L'-';
  if (negative || (at < end && text[at] == L'+')) {
    ++at;
  }
  if (end - at >= 2 && text[at] == L'0' && (text[at + 1] == L'x' || text[at + 1] == L'X')) {
    at += 2;
  }
  const std::size_t first = at;
  std::uint32_t number = 0;
  for (; at < end && Ascii::IsHexDigit(text[at]); ++at) {
    number = number << 4 | static_cast<std::uint32_t>(Ascii::HexDigitValue(text[at]));
  }
  if (at == first) {
    return false;
  }
  text.remove_prefix(at);
  value = negative ? 0 - number : number;
  return true;
}

std::wstring HexText(std::uint64_t value) {
  std::wstring text(kHexTextSize, L'0');
  for (std::size_t i = kHexTextSize; value != 0; value >>= 4) {
    text[--i] = L"0123456789abcdef"[value & 0xF];
  }
  return text;
}

std::uint16_t ReadField(std::wstring_view text, std::size_t position, std::size_t length) {
  return static_cast<std::uint16_t>(Iso8601::ReadField(text, position, length));
}

[[noreturn]] void ThrowUnknownForm() {
  throw std::invalid_argument("unknown argument value");
}

using LocaleFormatter = Platform::ErrorCode (*)(Platform::LocaleId, const Platform::CalendarFields&, std::wstring&);

std::wstring FormatForLocale(LocaleFormatter formatter, Platform::LocaleId locale,
                             const Platform::CalendarFields& fields, const char* failure) {
  std::wstring text;
  if (const Platform::ErrorCode code = formatter(locale, fields, text); code != Platform::kSuccess) {
    throw Win32Exception(failure, code);
  }
  return text;
}

}  // namespace

UtcTime::UtcTime(std::wstring_view text, StringValue form, bool local) {
  switch (form) {
    case StringValue::Hex:
      SetTimeAsHex(text, local);
      return;
    case StringValue::DateTime:
    case StringValue::ISO8601:
      SetTimeAsISO8601(text, local);
      return;
  }
  ThrowUnknownForm();
}

void UtcTime::SetTimeAsHex(std::wstring_view text, bool local) {
  if (text.empty()) {
    throw std::invalid_argument("Can't convert empty hex value to utc object");
  }
  std::wstring_view rest = text;
  std::uint32_t high = 0;
  std::uint32_t low = 0;
  if (!TakeHexNumber(rest, high) || !TakeHexNumber(rest, low)) {
    throw std::invalid_argument("Can't convert value: " + StringUtilities::Utf16ToUtf8(text) + " to utc object");
  }
  ticks_ = LocalFlag::StoreTicks(std::uint64_t{high} << 32 | low, local);
}

void UtcTime::SetTimeAsISO8601(std::wstring_view text, bool local) {
  if (!IsISO8601DateTime(text)) {
    throw std::invalid_argument("Is not a valid ISO8601 string");
  }
  Platform::CalendarFields fields;
  fields.year = ReadField(text, 0, 4);
  fields.month = ReadField(text, 5, 2);
  fields.day = ReadField(text, 8, 2);
  fields.hour = ReadField(text, 11, 2);
  fields.minute = ReadField(text, 14, 2);
  fields.second = ReadField(text, 17, 2);
  ticks_ = LocalFlag::StoreFields(fields, local);
}

bool UtcTime::IsISO8601DateTime(std::wstring_view text) noexcept {
  return Iso8601::Matches(text);
}

std::wstring UtcTime::ToString(StringValue form, bool local) const {
  switch (form) {
    case StringValue::Hex:
      return HexText(LocalFlag::HandOutTicks(ticks_, local));
    case StringValue::DateTime:
      return DatePicture::FormatFixed(LocalFlag::HandOutFields(ticks_, local), L' ');
    case StringValue::ISO8601:
      return DatePicture::FormatFixed(LocalFlag::HandOutFields(ticks_, local), L'T');
  }
  ThrowUnknownForm();
}

std::wstring UtcTime::ToString(std::wstring_view date_picture, std::wstring_view separator,
                               std::wstring_view time_picture, bool local) const {
  const Platform::CalendarFields fields = LocalFlag::HandOutFields(ticks_, local);
  std::wstring text;
  DatePicture::AppendDate(fields, date_picture, text);
  text += separator;
  DatePicture::AppendTime(fields, time_picture, text);
  return text;
}

std::wstring UtcTime::ToLocalDateString(LocaleUserAccount account, bool local) const {
  return FormatForLocale(Platform::FormatLocaleDate, GetLocale(account), LocalFlag::HandOutFields(ticks_, local),
                         "Can't format date");
}

std::wstring UtcTime::ToLocalTimeString(LocaleUserAccount account, bool local) const {
  return FormatForLocale(Platform::FormatLocaleTime, GetLocale(account), LocalFlag::HandOutFields(ticks_, local),
                         "Can't format time");
}

std::wstring UtcTime::ToLocalString(LocaleUserAccount account, bool local) const {
  return ToLocalDateString(account, local) + L' ' + ToLocalTimeString(account, local);
}

std::uint32_t UtcTime::GetLocale(LocaleUserAccount account) {
  switch (account) {
    case LocaleUserAccount::User:
      return Platform::kUserDefaultLocale;
    case LocaleUserAccount::System:
      return Platform::kSystemDefaultLocale;
  }
  throw std::invalid_argument("Invalid locale account information");
}

}  // namespace Zelto::Utilities
