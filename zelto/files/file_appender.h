/// @file
/// A text log that rotates by size.
#pragma once

#include <zelto/export.h>

#include <cstdint>
#include <string>

namespace Zelto::Utilities {

/// Appends lines to a log. `FileAppender` is the library's own.
class ZELTO_API IFileAppender {
 public:
  virtual void AppendLine(const std::wstring& line) = 0;
  virtual void SetMaxFileSize(int kibibytes) = 0;
  virtual void SetMaxBackupFiles(int count) = 0;
  virtual int GetMaxFileSize() = 0;
  virtual int GetMaxBackupFiles() = 0;
  virtual ~IFileAppender() = default;
};

/// Appends lines of text to one file in UTF-8 and rotates the file into numbered backups when it would grow past a
/// limit.
///
/// The file is opened, written and closed for every line: others can read it at any time, and what `AppendLine` wrote
/// survives the end of the process, though not a loss of power. Backup number n of agent.log is agent_n.log, 1 being
/// the most recent. A new appender has no size limit, so it never rotates, and no limit of backups.
///
/// Threads: no lock. Calls on one appender are made one at a time. Several appenders, in one or several processes, may
/// append to the same file, and their lines never mix; when they rotate it at the same time, a backup may be lost.
///
/// Paths from outside: whoever may write in the log's folder can stop the log or put a file of their own in its place,
/// and nothing else. A link, a pipe or a device in the log's place is not written to, and waiting for it does not
/// happen; a link among the folders is followed. A folder in the log's place stays where it is. What a caller logs of
/// strangers' text may contain line ends, which are written as such.
class ZELTO_API FileAppender : public IFileAppender {
 public:
  /// The value of the size limit that stands for none.
  static const std::int32_t noFileSizeLimit = 0;
  /// The value of the backup limit that stands for none.
  static const std::int32_t noBackupFileLimit = 0xFFFF;

  /// Touches no file.
  ///
  /// @param filePath  the log's full path; its folders are made when the first line is written
  explicit FileAppender(const std::wstring& filePath);

  /// Writes one line and its end, CR LF; a line feed within the line gets a carriage return before it too. Missing
  /// folders are made and the file is rotated first, when the limits ask for it.
  ///
  /// It rotates when the maximum number of backups is not 0, there is a size limit, and the file's bytes plus two for
  /// each UTF-16 unit of the line are more than that limit. For ASCII text that is rather early, and on purpose.
  ///
  /// A line is written whole or not at all. When the file cannot be opened, written or closed, or the line has a lone
  /// surrogate and no UTF-8 form, the line is lost and only the diagnostics sink hears of it.
  ///
  /// @throws FileSystemException, Win32Exception  when a folder cannot be made, the file's size cannot be learnt or a
  ///     file cannot be moved; the line is not written then. `Win32Exception` stands in where the path has a unit above
  ///     0xFF. Moves that were made stay made, and the next call goes on from there.
  void AppendLine(const std::wstring& line) override;

  /// Sets the size limit in KiB, `noFileSizeLimit` for none; not validated, and a negative one rotates for every line.
  void SetMaxFileSize(int kibibytes) override;

  /// Sets the greatest backup number kept, `noBackupFileLimit` for any; not validated. With 0 or less the file is never
  /// rotated and grows without limit.
  void SetMaxBackupFiles(int count) override;

  int GetMaxFileSize() override;
  int GetMaxBackupFiles() override;

 protected:
  /// Moves a file and the backups that follow it one number up, oldest first. Backups above the greatest number kept
  /// are not touched but for the first of them, which is replaced.
  ///
  /// @param index     the backup to begin with; 0 is the file itself
  /// @param filePath  the file
  /// @throws FileSystemException, Win32Exception  when a file cannot be moved; those with greater numbers have been
  void BackupFile(int index, const std::wstring& filePath);

 private:
  bool MustRotate(std::uint64_t size, const std::wstring& line) const;

  std::int32_t max_file_size_ = noFileSizeLimit;
  std::int32_t max_backup_files_ = noBackupFileLimit;
  std::wstring file_path_;
};

}  // namespace Zelto::Utilities
