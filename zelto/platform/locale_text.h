/// @file
/// Dates and times as the user's or the system's locale writes them.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/calendar.h>

#include <cstdint>
#include <string>

namespace Zelto::Platform {

/// A Windows locale identifier (LCID); Linux knows these two.
using LocaleId = std::uint32_t;
inline constexpr LocaleId kUserDefaultLocale = 0x0400;    // LOCALE_USER_DEFAULT
inline constexpr LocaleId kSystemDefaultLocale = 0x0800;  // LOCALE_SYSTEM_DEFAULT

/// Writes the date of the fields in the locale's short form.
///
/// Windows: `GetDateFormatW`. Linux: `%x` of the locale that the environment names (`LC_ALL`, `LC_TIME`, `LANG`), or
/// for the system of that in /etc/locale.conf or /etc/default/locale; a locale that is not installed counts as "C".
/// @return 0, or the system's error
/// @throws std::bad_alloc
ZELTO_API ErrorCode FormatLocaleDate(LocaleId locale, const CalendarFields& fields, std::wstring& text);

/// Writes the time of day in the locale's form. Windows: `GetTimeFormatW`. Linux: `%X`.
ZELTO_API ErrorCode FormatLocaleTime(LocaleId locale, const CalendarFields& fields, std::wstring& text);

}  // namespace Zelto::Platform
