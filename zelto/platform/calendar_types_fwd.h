/// @file
/// `FILETIME` and `SYSTEMTIME` as names in `Zelto::Utilities`, without `<windows.h>`.
///
/// Windows: the system's own structures, complete once `<windows.h>` is included. Linux: structures of the same layout.
/// Portable code that looks inside them includes <zelto/platform/calendar_types.h>.
#pragma once

#include <cstdint>

#if defined(_WIN32)

struct _FILETIME;
struct _SYSTEMTIME;

namespace Zelto::Utilities {
using FILETIME = ::_FILETIME;
using SYSTEMTIME = ::_SYSTEMTIME;
}  // namespace Zelto::Utilities

#else

namespace Zelto::Utilities {

/// 100-nanosecond ticks since 1601-01-01, in two halves.
struct FILETIME {
  std::uint32_t dwLowDateTime;
  std::uint32_t dwHighDateTime;
};

/// Calendar fields.
struct SYSTEMTIME {
  std::uint16_t wYear;
  std::uint16_t wMonth;      ///< 1 to 12
  std::uint16_t wDayOfWeek;  ///< 0 is Sunday; not read
  std::uint16_t wDay;        ///< 1 to 31
  std::uint16_t wHour;
  std::uint16_t wMinute;
  std::uint16_t wSecond;
  std::uint16_t wMilliseconds;
};

}  // namespace Zelto::Utilities

#endif
