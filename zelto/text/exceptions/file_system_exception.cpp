#include "zelto/text/exceptions/file_system_exception.h"

#include "zelto/platform/errors.h"
#include "zelto/text/string_utilities.h"

namespace Zelto::Utilities {

FileSystemException::FileSystemException(std::string_view message, std::wstring_view path1)
    : FileSystemException(message, path1, std::wstring_view(), Platform::GetLastErrorCode()) {}

FileSystemException::FileSystemException(std::string_view message, std::wstring_view path1, std::uint32_t code)
    : FileSystemException(message, path1, std::wstring_view(), code) {}

FileSystemException::FileSystemException(std::string_view message, std::wstring_view path1, std::wstring_view path2)
    : FileSystemException(message, path1, path2, Platform::GetLastErrorCode()) {}

FileSystemException::FileSystemException(std::string_view message, std::wstring_view path1, std::wstring_view path2,
                                         std::uint32_t code)
    : WideFilesystemError(message, path1, path2, code),
      text_(StringUtilities::ToAscii(FileSystemException::GetErrorMessage())) {}

const char* FileSystemException::what() const noexcept {
  return text_.what();
}

std::wstring FileSystemException::GetErrorMessage() const {
  return StringUtilities::Utf8ToUtf16(WideFilesystemError::what()) + L" " + path1() + L" " + path2();
}

}  // namespace Zelto::Utilities
