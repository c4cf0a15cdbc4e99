/// @file
/// Version numbers of four parts.
#pragma once

#include <zelto/export.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// A version as outside interfaces lay it out: the reverse of the reading order.
struct _CVersion {  // NOLINT(bugprone-reserved-identifier): the name that outside interfaces use
  std::uint32_t revision;
  std::uint32_t build;
  std::uint32_t minor;
  std::uint32_t major;
};

/// major.minor.build.revision. 0.0.0.0 when default-constructed.
///
/// What fails throws `Win32Exception` with code 87 and leaves the object unchanged.
class ZELTO_API Version {
 public:
  Version() noexcept = default;
  Version(const Version&) noexcept = default;
  Version& operator=(const Version&) noexcept = default;
  virtual ~Version() = default;

  explicit Version(const _CVersion& version) noexcept;
  explicit Version(std::string_view text);
  explicit Version(std::wstring_view text);
  Version(std::uint32_t major_part, std::uint32_t minor_part, std::uint32_t build, std::uint32_t revision) noexcept;

  void SetVersion(const _CVersion& version) noexcept;

  /// Reads a version from UTF-8 text; otherwise as from wide text.
  ///
  /// @throws std::range_error  "bad conversion" when the text is not UTF-8
  void SetVersion(std::string_view text);

  /// Reads a version as scanf's "%u.%u.%u.%u" does. The text must hold exactly three dots and begin with a number; from
  /// the first part on that is no number the parts are 0, and text after the fourth number is ignored: "1.x.3.4" is
  /// 1.0.0.0. White space (of ASCII) and a sign may stand before each number. A number wraps modulo 2 to the 32nd; "-1"
  /// is 4294967295. Reading ends at a zero unit.
  ///
  /// @throws Win32Exception  "String is not a valid version string"
  void SetVersion(std::wstring_view text);

  void SetVersion(std::uint32_t major_part, std::uint32_t minor_part, std::uint32_t build,
                  std::uint32_t revision) noexcept;

  std::uint32_t GetMajor() const noexcept { return parts_[0]; }
  std::uint32_t GetMinor() const noexcept { return parts_[1]; }
  std::uint32_t GetBuild() const noexcept { return parts_[2]; }
  std::uint32_t GetRevision() const noexcept { return parts_[3]; }
  _CVersion GetCVerison() const noexcept;

  /// -1, 0 or 1: this version is older than, equal to or newer than the other.
  int Compare(const Version& other) const noexcept;

  friend bool operator==(const Version& a, const Version& b) noexcept { return a.Compare(b) == 0; }
  friend bool operator!=(const Version& a, const Version& b) noexcept { return a.Compare(b) != 0; }
  friend bool operator<(const Version& a, const Version& b) noexcept { return a.Compare(b) < 0; }
  friend bool operator<=(const Version& a, const Version& b) noexcept { return a.Compare(b) <= 0; }
  friend bool operator>(const Version& a, const Version& b) noexcept { return a.Compare(b) > 0; }
  friend bool operator>=(const Version& a, const Version& b) noexcept { return a.Compare(b) >= 0; }

  /// Requires exactly three dots, and looks at nothing else.
  ///
  /// @throws Win32Exception  "String is not a valid version string"
  static void CheckCompleteVersionFormat(std::wstring_view text);

  /// The default format "%d.%d.%d.%d". Parts of 2147483648 and more print negative, although reading takes them.
  std::wstring ToString() const;

  /// Formats the four parts, in order, as `StringUtilities::SafeSprintf` does.
  ///
  /// @param format  at most four conversions of 32-bit integers: d, i, u, x, X or o, with flags, width and precision,
  ///                without "*"; "%%" is a percent sign
  /// @throws Win32Exception  "Can't generate a valid version string" for any other format, and when the result is empty
  ///                         or longer than 255 units
  std::wstring ToString(const wchar_t* format) const;

  /// `ToString()` in UTF-8.
  std::string ToCharString() const;

 private:
  std::array<std::uint32_t, 4> parts_{};
};

}  // namespace Zelto::Utilities
