#include "zelto/text/exceptions/wide_filesystem_error.h"

#include "zelto/text/exceptions/compose_system_error.h"

namespace Zelto::Utilities {

WideFilesystemError::WideFilesystemError(std::string_view message, std::wstring_view path1, std::wstring_view path2,
                                         std::uint32_t code)
    : std::system_error(ComposeSystemError(message, code)),
      paths_(std::make_shared<const Paths>(Paths{std::wstring(path1), std::wstring(path2)})) {}

const std::wstring& WideFilesystemError::path1() const noexcept {
  return paths_->first;
}

const std::wstring& WideFilesystemError::path2() const noexcept {
  return paths_->second;
}

}  // namespace Zelto::Utilities
