/// @file
/// Dates and times by pictures. Not installed.
#pragma once

#include <zelto/platform/calendar.h>

#include <string>
#include <string_view>

namespace Zelto::Utilities::DatePicture {

/// Appends the date as `UtcTime::ToString` describes it. Letters of the time stand for themselves.
void AppendDate(const Platform::CalendarFields& fields, std::wstring_view picture, std::wstring& text);

/// Appends the time of day. Letters of the date stand for themselves.
void AppendTime(const Platform::CalendarFields& fields, std::wstring_view picture, std::wstring& text);

/// The text of the pictures "yyyy'-'MM'-'dd" and "HH:mm:ss" with a separator between, made at once.
std::wstring FormatFixed(const Platform::CalendarFields& fields, wchar_t separator);

}  // namespace Zelto::Utilities::DatePicture
