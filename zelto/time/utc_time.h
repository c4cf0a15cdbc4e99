/// @file
/// Points in time.
#pragma once

#include <zelto/export.h>
#include <zelto/platform/calendar_types_fwd.h>
#include <zelto/time/time_span.h>

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// A point in time: an unsigned count of 100-nanosecond ticks since 1601-01-01 00:00:00 UTC, the scale of file times.
/// 0 means empty.
///
/// Almost every operation takes a flag `local`. With it, a value that is handed in is local time and is converted to
/// UTC; a value that is handed out is converted from UTC. Local time is that of the machine's zone, whose rules of
/// today hold for every year, on both targets. The local way leads through calendar fields: it cuts to milliseconds,
/// while without the flag every tick is kept. An hour that occurs twice is read as daylight time.
///
/// The calendar takes the years 1601 to 30827 and ticks below 2 to the 63rd; beyond them conversions throw. What fails
/// throws `Win32Exception` with the system's code (87 for what the calendar refuses) and one of these texts:
/// - "Can't convert file time to system time": ticks of 2 to the 63rd or more have no calendar fields;
/// - "Can't convert system time to file time": fields that the calendar refuses, as 30 February;
/// - "Can't convert from local time to utc time": either way between UTC and local time.
/// Handed in as local, a time so early that its UTC would lie before the scale is stored as empty instead; handed out
/// as local, a time whose local time would lie before the scale throws, so an empty time does west of Greenwich.
///
/// Objects are plain values. A setter that throws changes nothing.
class ZELTO_API UtcTime {
 public:
  /// Forms of text.
  enum class StringValue : std::uint32_t {
    Hex = 0,       ///< the tick count in 16 lower-case hexadecimal digits
    DateTime = 1,  ///< 2017-11-08 15:44:56
    ISO8601 = 2    ///< 2017-11-08T15:44:56
  };

  /// The place of a time relative to another.
  enum class FileTimeCompare : std::int32_t {
    Before = -1,
    Equal = 0,
    After = 1
  };

  /// Whose locale writes a text.
  enum class LocaleUserAccount : std::uint32_t {
    User = 0,
    System = 1
  };

  /// Empty.
  constexpr UtcTime() noexcept = default;

  /// A file time. Without `local` any ticks are taken as they are.
  UtcTime(const FILETIME& time, bool local);

  /// Calendar fields. The day of the week is not read.
  ///
  /// @throws Win32Exception  "Can't convert system time to file time" when the calendar does not have them
  UtcTime(const SYSTEMTIME& time, bool local);
  UtcTime(std::uint16_t year, std::uint16_t month, std::uint16_t day, std::uint16_t hour, std::uint16_t minute,
          std::uint16_t second, std::uint16_t milliseconds, bool local);

  /// Reads a text. Form 0 is read by `SetTimeAsHex`, forms 1 and 2 both by `SetTimeAsISO8601`.
  ///
  /// @throws std::invalid_argument  "unknown argument value" for any other form
  UtcTime(std::wstring_view text, StringValue form, bool local);

  /// @param unix_seconds  since 1970-01-01 00:00:00; 0 gives an empty time, not 1970. What lies before 1601 wraps.
  UtcTime(std::int64_t unix_seconds, bool local);

  /// The current time, as exact as the system tells it.
  static UtcTime Now() noexcept;

  /// The time of a raw tick count.
  static constexpr UtcTime FromTicks(std::uint64_t ticks) noexcept {
    UtcTime time;
    time.ticks_ = ticks;
    return time;
  }

  /// As the constructors.
  void SetTime(const FILETIME& time, bool local);
  void SetTime(const SYSTEMTIME& time, bool local);
  void SetTime(std::uint16_t year, std::uint16_t month, std::uint16_t day, std::uint16_t hour, std::uint16_t minute,
               std::uint16_t second, std::uint16_t milliseconds, bool local);

  /// Reads two numbers of at most eight hexadecimal digits, the high half first, as scanf's "%08x%08x" does: white
  /// space, a sign and "0x" may stand before each (sign and "0x" count to the eight), text after the second is ignored.
  /// "1 2" is 0x0000000100000002.
  ///
  /// @throws std::invalid_argument  "Can't convert empty hex value to utc object", or "Can't convert value: ", the text
  ///                                and " to utc object"
  /// @throws std::range_error       "bad conversion" when that text is not UTF-16
  void SetTimeAsHex(std::wstring_view text, bool local);

  /// Reads year, month, day, hour, minute and second at the positions 0, 5, 8, 11, 14 and 17, whatever stands between
  /// them. Fractions and zone designators are ignored. A text without dashes passes the test and is read at the same
  /// positions all the same; a field that holds no number is 0.
  ///
  /// @throws std::invalid_argument  "Is not a valid ISO8601 string" unless `IsISO8601DateTime`
  /// @throws std::out_of_range      "invalid string position" when a position lies beyond the end, as in a date alone
  void SetTimeAsISO8601(std::wstring_view text, bool local);

  /// Whether the whole text is of one of these forms, in ASCII digits, in linear time:
  /// - when its third character is ":", hh:mm:ss, then any number of fractions, then any number of zones;
  /// - otherwise yyyy-mm-dd, each dash optional, then any number of groups of one of " ,T", hh:mm:ss and any number of
  ///   fractions, then any number of zones.
  /// A fraction is any unit but a line end (U+000A, U+000D, U+2028, U+2029) and three digits; a zone is "Z", or a sign,
  /// two digits, any unit but a line end, and two digits. The values are not looked at: a month 99 passes.
  static bool IsISO8601DateTime(std::wstring_view text) noexcept;

  /// Whether the calendar has this time.
  static bool IsValid(std::uint16_t year, std::uint16_t month, std::uint16_t day, std::uint16_t hour,
                      std::uint16_t minute, std::uint16_t second) noexcept;

  constexpr bool IsEmpty() const noexcept { return ticks_ == 0; }

  /// The raw tick count.
  constexpr std::uint64_t GetTime() const noexcept { return ticks_; }
  /// The calendar fields.
  void GetTime(std::uint16_t& year, std::uint16_t& month, std::uint16_t& day, std::uint16_t& hour,
               std::uint16_t& minute, std::uint16_t& second, std::uint16_t& milliseconds, bool local) const;

  /// The tick count in two halves. Without `local` it never throws.
  FILETIME GetFileTime(bool local) const;
  /// The calendar fields, and each alone.
  SYSTEMTIME GetSystemTime(bool local) const;

  std::uint16_t GetYear(bool local) const;
  std::uint16_t GetMonth(bool local) const;
  std::uint16_t GetDay(bool local) const;
  std::uint16_t GetHour(bool local) const;
  std::uint16_t GetMinute(bool local) const;
  std::uint16_t GetSecond(bool local) const;
  std::uint16_t GetMilliseconds(bool local) const;

  /// Seconds since 1970-01-01, cut down to the whole second; negative before. An empty time gives -11,644,473,600.
  std::int64_t GetUnixTimestamp(bool local) const;

  /// Seconds from this time's second to 23:59:59 of the same day: 0 to 86,399.
  std::int64_t GetSecondsUntilMidnight(bool local) const;

  /// Whether this time is before, equal to or after the given one. With `local` the given one is local time.
  FileTimeCompare CompareToFileTime(const FILETIME& time, bool local) const;

  /// Writes form 0, 1 or 2. Never depends on a locale; years above 9999 have five digits.
  ///
  /// @throws std::invalid_argument  "unknown argument value" for any other form
  std::wstring ToString(StringValue form, bool local) const;

  /// Writes the date by its picture, the separator, and the time by its picture. The same on both targets, in English.
  ///
  /// Pictures are those of Windows: in the date's, d, dd, ddd, dddd (day, with two digits, Wed, Wednesday), M to MMMM
  /// likewise, y, yy (year of the century), yyyy; in the time's, h, hh (12 hours), H, HH, m, mm, s, ss, t, tt (A or
  /// AM). Longer runs of a letter are as its longest. Text in quotes stands for itself, with a doubled quote for a
  /// quote; so does every other character. An empty picture gives no text.
  std::wstring ToString(std::wstring_view date_picture, std::wstring_view separator, std::wstring_view time_picture,
                        bool local) const;

  /// Date, time, and both with a blank between, as the user's or the system's locale writes them.
  ///
  /// @throws std::invalid_argument  "Invalid locale account information" for an account that does not exist
  /// @throws Win32Exception         "Can't format date" or "Can't format time"
  std::wstring ToLocalDateString(LocaleUserAccount account, bool local) const;
  std::wstring ToLocalTimeString(LocaleUserAccount account, bool local) const;
  std::wstring ToLocalString(LocaleUserAccount account, bool local) const;

  /// The Windows locale identifier: 0x0400 for the user's default, 0x0800 for the system's, on both targets.
  ///
  /// @throws std::invalid_argument  "Invalid locale account information" for an account that does not exist
  static std::uint32_t GetLocale(LocaleUserAccount account);

  /// Add without an overflow check: the count wraps. A negative number of days goes back.
  void AddDays(std::int32_t days) noexcept;
  void AddSeconds(std::uint32_t seconds) noexcept;
  void AddMilliseconds(std::uint64_t milliseconds) noexcept;

  /// Subtract; what is not greater than the amount becomes empty.
  void SubDays(std::uint64_t days) noexcept;
  void SubMilliseconds(std::uint64_t milliseconds) noexcept;

  /// The signed difference of the tick counts.
  friend constexpr TimeSpan operator-(const UtcTime& a, const UtcTime& b) noexcept {
    return TimeSpan(static_cast<std::int64_t>(a.ticks_ - b.ticks_));
  }
  // NOLINTNEXTLINE(modernize-use-nullptr): the 0 in what the compiler writes here is no pointer.
  friend constexpr auto operator<=>(const UtcTime&, const UtcTime&) noexcept = default;

 private:
  void Subtract(std::uint64_t count, std::uint64_t unit) noexcept;

  std::uint64_t ticks_ = 0;
};

}  // namespace Zelto::Utilities
