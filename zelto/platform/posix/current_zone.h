/// @file
/// The zone that this process lives in. Not installed.
#pragma once

#include <zelto/platform/calendar.h>

namespace Zelto::Platform {

/// The rule of `TZ`, else of the system's zone file; UTC when there is none or it is not valid.
///
/// `TZ` is looked at every time, a file once a second, by each thread for itself.
ZoneRecord CurrentZone() noexcept;

}  // namespace Zelto::Platform
