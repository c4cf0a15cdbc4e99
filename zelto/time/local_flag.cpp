#include "zelto/time/local_flag.h"

#include "zelto/text/exceptions/win32_exception.h"

namespace Zelto::Utilities::LocalFlag {
namespace {

void Require(Platform::ErrorCode code, const char* message) {
  if (code != Platform::kSuccess) {
    throw Win32Exception(message, code);
  }
}

Platform::CalendarFields ToFields(std::uint64_t ticks) {
  Platform::CalendarFields fields;
  Require(Platform::TicksToFields(ticks, fields), "Can't convert file time to system time");
  return fields;
}

std::uint64_t ToTicks(const Platform::CalendarFields& fields) {
  std::uint64_t ticks = 0;
  Require(Platform::FieldsToTicks(fields, ticks), "Can't convert system time to file time");
  return ticks;
}

constexpr char kZoneFailure[] = "Can't convert from local time to utc time";

}  // namespace

std::uint64_t StoreTicks(std::uint64_t ticks, bool local) {
  if (!local) {
    return ticks;
  }
  const Platform::CalendarFields fields = ToFields(ticks);
  Platform::CalendarFields utc;
  const Platform::ErrorCode code = Platform::LocalToUtc(fields, utc);
  if (code == Platform::kInvalidParameter) {
    const std::int64_t bias = Platform::CurrentBiasTicks();
    if (bias <= 0 && ticks <= static_cast<std::uint64_t>(-bias)) {
      return 0;
    }
  }
  Require(code, kZoneFailure);
  return ToTicks(utc);
}

std::uint64_t StoreFields(const Platform::CalendarFields& fields, bool local) {
  return StoreTicks(ToTicks(fields), local);
}

std::uint64_t HandOutTicks(std::uint64_t utc_ticks, bool local) {
  if (!local) {
    return utc_ticks;
  }
  Platform::CalendarFields fields;
  Require(Platform::UtcToLocal(ToFields(utc_ticks), fields), kZoneFailure);
  return ToTicks(fields);
}

Platform::CalendarFields HandOutFields(std::uint64_t utc_ticks, bool local) {
  return ToFields(HandOutTicks(utc_ticks, local));
}

}  // namespace Zelto::Utilities::LocalFlag
