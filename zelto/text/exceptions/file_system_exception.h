/// @file
/// The exception for failed work with files.
#pragma once

#include <zelto/export.h>
#include <zelto/text/exceptions/wide_filesystem_error.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// Work with one or two files failed.
///
/// `what()` is the base's text, " ", path1, " " and path2; both blanks are always there. Code units U+0080 to U+00FF of
/// the paths are single bytes in it.
///
/// The constructors throw `std::range_error` "bad conversion" instead when a path holds a unit above 0xFF or the
/// message is not UTF-8. Those without a code take the calling thread's last system error before anything else happens;
/// messages and paths are views so that literals cost no allocation, which might change that error.
class ZELTO_API FileSystemException : public WideFilesystemError {
 public:
  FileSystemException(std::string_view message, std::wstring_view path1);
  FileSystemException(std::string_view message, std::wstring_view path1, std::uint32_t code);
  FileSystemException(std::string_view message, std::wstring_view path1, std::wstring_view path2);
  FileSystemException(std::string_view message, std::wstring_view path1, std::wstring_view path2, std::uint32_t code);

  const char* what() const noexcept override;

  /// The text of `what()` as wide text, with the paths unchanged.
  virtual std::wstring GetErrorMessage() const;

 private:
  std::runtime_error text_;  // copies without throwing, as an exception should
};

}  // namespace Zelto::Utilities
