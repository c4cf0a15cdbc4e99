#include "zelto/files/file_appender.h"

#include "zelto/files/backup_name.h"
#include "zelto/files/file_system.h"
#include "zelto/platform/files.h"
#include "zelto/text/diagnostics.h"
#include "zelto/text/string_utilities.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Zelto::Utilities {
namespace {

constexpr std::int64_t kBytesPerKibibyte = 1024;
constexpr std::int64_t kEstimatedBytesPerUnit = 2;
constexpr std::string_view kLineEnd = "\r\n";

std::int64_t CountUnits(const std::wstring& text) noexcept {
  const auto pairs = std::count_if(text.begin(), text.end(), [](wchar_t c) { return ValueOf(c) > 0xFFFFU; });
  return static_cast<std::int64_t>(text.size()) + pairs;
}

// The bytes that the file gets for a line: UTF-8, every line feed with a carriage return before it.
std::string EncodeLine(const std::wstring& line) {
  std::string text = StringUtilities::Utf16ToUtf8(line);
  std::size_t feed = text.find('\n');
  if (feed == std::string::npos) {
    return std::move(text.append(kLineEnd));
  }
  std::string bytes;
  std::size_t done = 0;
  for (; feed != std::string::npos; feed = text.find('\n', done)) {
    bytes.append(text, done, feed - done).append(kLineEnd);
    done = feed + 1;
  }
  return bytes.append(text, done).append(kLineEnd);
}

// A sink may itself append to a log, and to one that cannot be written: then there is an end to it.
void TellLoss(const std::wstring& path, const std::wstring& reason) {
  thread_local bool telling = false;
  const std::wstring text = L"A line of the log " + path + L" is lost: " + reason;
  if (!telling) {
    telling = true;
    Diagnostics::Report(text);
    telling = false;
  }
}

Platform::ErrorCode WriteBytes(Platform::AppendFile& file, const std::wstring& path, std::string_view bytes) noexcept {
  using Missing = Platform::AppendFile::Missing;
  Platform::ErrorCode code = file.IsOpen() ? Platform::kSuccess : file.Open(path, Missing::Create);
  if (code == Platform::kSuccess) {
    code = file.Append(bytes);
  }
  const Platform::ErrorCode close_code = file.Close();
  return code != Platform::kSuccess ? code : close_code;
}

void WriteLine(Platform::AppendFile& file, const std::wstring& path, const std::wstring& line) noexcept {
  try {
    try {
      const Platform::ErrorCode code = WriteBytes(file, path, EncodeLine(line));
      if (code != Platform::kSuccess) {
        TellLoss(path, L"system error " + std::to_wstring(code));
      }
    } catch (const std::range_error&) {
      TellLoss(path, L"it is not well-formed UTF-16");
    }
  } catch (const std::exception&) {
    Diagnostics::Report(L"A line of a log is lost: out of memory");
  }
}

}  // namespace

// An inline constant would not be exported from the DLL.
const std::int32_t FileAppender::noFileSizeLimit;
const std::int32_t FileAppender::noBackupFileLimit;

FileAppender::FileAppender(const std::wstring& filePath) : file_path_(filePath) {}

void FileAppender::AppendLine(const std::wstring& line) {
  // Opening what is there answers three questions at once: whether the folder exists, the file too, and its size.
  Platform::AppendFile file;
  const bool is_there = file.Open(file_path_, Platform::AppendFile::Missing::Fail) == Platform::kSuccess;
  if (!is_there) {
    EnsureFolder(FolderOf(file_path_));
  }
  if (MustRotate(is_there ? file.SizeAtOpen() : FileSize(file_path_), line)) {
    file.Close();
    BackupFile(0, file_path_);
  }
  WriteLine(file, file_path_, line);
}

bool FileAppender::MustRotate(std::uint64_t size, const std::wstring& line) const {
  if (max_backup_files_ == 0 || max_file_size_ == noFileSizeLimit) {
    return false;
  }
  const std::int64_t estimate = static_cast<std::int64_t>(size) + kEstimatedBytesPerUnit * CountUnits(line);
  return max_file_size_ * kBytesPerKibibyte < estimate;
}

void FileAppender::BackupFile(int index, const std::wstring& filePath) {
  const auto name = [&filePath](int number) { return number == 0 ? filePath : BackupName(filePath, number); };
  // Upwards to the last that is to be moved, then downwards moving: a loop, since there may be thousands.
  int end = index;
  while (end < std::numeric_limits<int>::max() && (max_backup_files_ == noBackupFileLimit || end < max_backup_files_) &&
         FileExists(name(end))) {
    ++end;
  }
  while (end > index) {
    --end;
    MoveFileReplacing(name(end), name(end + 1));
  }
}

void FileAppender::SetMaxFileSize(int kibibytes) {
  max_file_size_ = kibibytes;
}

void FileAppender::SetMaxBackupFiles(int count) {
  max_backup_files_ = count;
}

int FileAppender::GetMaxFileSize() {
  return max_file_size_;
}

int FileAppender::GetMaxBackupFiles() {
  return max_backup_files_;
}

}  // namespace Zelto::Utilities
