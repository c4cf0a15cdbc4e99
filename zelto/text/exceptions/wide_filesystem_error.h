/// @file
/// A system error about one or two files.
#pragma once

#include <zelto/export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace Zelto::Utilities {

/// A system error that also holds two wide paths. `std::filesystem::filesystem_error` holds narrow ones on Linux.
///
/// `what()` is the message, ": " unless the message is empty, and the description of the code.
class ZELTO_API WideFilesystemError : public std::system_error {
 public:
  /// @param path2  may be empty: the error is about one file
  WideFilesystemError(std::string_view message, std::wstring_view path1, std::wstring_view path2, std::uint32_t code);

  // Copied, never moved: a moved-from error would have no paths to refer to.
  WideFilesystemError(const WideFilesystemError&) noexcept = default;
  WideFilesystemError& operator=(const WideFilesystemError&) noexcept = default;

  /// The paths as given to the constructor.
  const std::wstring& path1() const noexcept;
  const std::wstring& path2() const noexcept;

 private:
  struct Paths {
    std::wstring first;
    std::wstring second;
  };

  std::shared_ptr<const Paths> paths_;  // shared, as copying an exception should not throw
};

}  // namespace Zelto::Utilities
