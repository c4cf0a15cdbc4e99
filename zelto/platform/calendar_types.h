/// @file
/// `FILETIME` and `SYSTEMTIME` as complete types on both targets. Includes `<windows.h>` on Windows.
#pragma once

#include <zelto/platform/calendar_types_fwd.h>

#if defined(_WIN32)
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
#endif
