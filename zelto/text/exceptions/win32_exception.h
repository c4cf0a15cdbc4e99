/// @file
/// The exception for a failed call of the operating system.
#pragma once

#include <zelto/export.h>

#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace Zelto::Utilities {

/// A call of the operating system failed. Carries a Win32 code on both targets.
///
/// Its text is the message, then ": " unless the message is empty, then the description of the code in
/// `SystemErrorCategory()`. When that text holds ": unknown error" anywhere, ". Error Code: " and the code in decimal
/// follow. `code()` of the base compares with `std::errc` values.
class ZELTO_API Win32Exception : public std::system_error {
 public:
  /// Takes the calling thread's last system error (`GetLastError`; on Linux `errno`, translated) before anything else
  /// happens. The message is a view so that a literal costs no allocation, which might change that error.
  explicit Win32Exception(std::string_view message);

  /// @param code  any Win32 code; not validated
  Win32Exception(std::string_view message, std::uint32_t code);

  std::uint32_t GetErrorCode() const noexcept { return error_code_; }

  /// A Win32 code for an HRESULT, by a comparison that only looks at the high half: 0 for 0 and for a value whose high
  /// half has every bit of 0x8007 and whose low half is zero (0x80070000), 1627 for everything else, 0x80070005
  /// included.
  static std::uint32_t Win32FromHRESULT(std::int32_t hr) noexcept;

  const char* what() const noexcept override;

 private:
  std::uint32_t error_code_;
  std::runtime_error text_;  // copies without throwing, as an exception should
};

}  // namespace Zelto::Utilities
