#include "tests/support/diagnostics_recorder.h"
#include "tests/support/temp_folder.h"
#include "zelto/files/file_appender.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace Zelto::Utilities {
namespace {

using namespace Zelto::Testing;

TEST(LogFaults, AShortWriteIsCutBack) {
  constexpr std::size_t kLineBytes = 1002;
  const TempFolder folder;
  const std::wstring path = folder / L"agent.log";
  DiagnosticsRecorder reports;
  FileAppender log(path);
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  for (const unsigned int part : {500U, 0U}) {  // of the line that is lost
    const rlimit limit{3 * kLineBytes + part, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::filesystem::remove(Native(path));
    for (std::size_t lines = 1; lines <= 5; ++lines) {
      log.AppendLine(std::wstring(kLineBytes - 2, L'x'));
      EXPECT_EQ(reports.Take(path), lines > 3 ? 1U : 0U);
      EXPECT_EQ(ReadFile(path).size(), std::min<std::size_t>(lines, 3) * kLineBytes);
    }
  }
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  log.AppendLine(L"again");
  EXPECT_EQ(ReadFile(path).substr(3 * kLineBytes - 3), "x\r\nagain\r\n");
}

TEST(LogFaults, AFullDiskLosesWholeLines) {
  const TempFolder disk;
  if (::mount("tmpfs", disk.Path().c_str(), "tmpfs", 0, "size=64k") != 0) {
    GTEST_SKIP() << "only who may mount can make a small disk";
  }
  const std::wstring path = disk / L"logs/agent.log";
  DiagnosticsRecorder reports;
  FileAppender log(path);
  std::size_t written = 0;
  for (; reports.Take(path) == 0 && written < 100; ++written) {
    log.AppendLine(std::wstring(1000, L'x'));
  }
  EXPECT_EQ(ReadFile(path).size(), (written - 1) * 1002);
  log.SetMaxFileSize(1);
  log.SetMaxBackupFiles(1);
  log.AppendLine(L"rotated, still full");
  log.AppendLine(std::wstring(600, L'x'));  // replaces the only backup: there is room again
  log.AppendLine(L"room");
  EXPECT_EQ(reports.Take(path), 1U);
  EXPECT_EQ(ReadFile(path), std::string(600, 'x') + "\r\nroom\r\n");
  EXPECT_EQ(::umount2(disk.Path().c_str(), MNT_DETACH), 0);
}

TEST(LogFaults, AFolderThatMayNotBeWrittenLosesLinesAndOneThatMayNotBeSeenThrows) {
  const TempFolder folder;
  const std::wstring path = folder / L"agent.log";
  DiagnosticsRecorder reports;
  FileAppender log(path);
  const bool privileged = ::geteuid() == 0;
  ASSERT_EQ(::chmod(folder.Path().c_str(), 0555), 0);
  ASSERT_TRUE(!privileged || ::seteuid(65534) == 0);
  log.AppendLine(L"lost");
  EXPECT_EQ(reports.Take(path), 1U);
  FileAppender below(folder / L"new/agent.log");
  EXPECT_ANY_THROW(below.AppendLine(L"lost"));
  ASSERT_TRUE(!privileged || ::seteuid(0) == 0);
  ASSERT_EQ(::chmod(folder.Path().c_str(), 0600), 0);
  ASSERT_TRUE(!privileged || ::seteuid(65534) == 0);
  EXPECT_ANY_THROW(log.AppendLine(L"lost"));
  ASSERT_TRUE(!privileged || ::seteuid(0) == 0);
  ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
  EXPECT_FALSE(Exists(path));
}

TEST(LogFaults, NothingButAFileIsWrittenTo) {
  const TempFolder folder;
  WriteFile(folder / L"target", "target");
  ASSERT_EQ(::mkfifo((folder.Path() / "pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink(folder.Path() / "target", folder.Path() / "link");
  std::filesystem::create_symlink(folder.Path() / "absent", folder.Path() / "dangling");
  std::filesystem::create_symlink("/dev/null", folder.Path() / "device");
  DiagnosticsRecorder reports;
  for (const wchar_t* name : {L"pipe", L"link", L"dangling", L"device"}) {
    FileAppender log(folder / name);
    log.AppendLine(L"lost");
    EXPECT_EQ(reports.Take(folder / name), 1U) << Native(name);
  }
  // With a reader the pipe could be opened.
  const int reader = ::open((folder.Path() / "pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  FileAppender(folder / L"pipe").AppendLine(L"lost");
  EXPECT_EQ(reports.Take(folder / L"pipe"), 1U);
  char byte = 0;
  EXPECT_LE(::read(reader, &byte, 1), 0);
  ::close(reader);
  FileAppender(L"/dev/null").AppendLine(L"lost");
  EXPECT_EQ(reports.Take(L"/dev/null"), 1U);
  EXPECT_EQ(ReadFile(folder / L"target"), "target");
  EXPECT_FALSE(Exists(folder / L"absent"));
  for (const std::wstring& no_path : {std::wstring{L'/', L't', 0xD83D}, std::wstring{L'/', 0xDE00, L'/', L'a'}}) {
    EXPECT_ANY_THROW(FileAppender(no_path).AppendLine(L"lost"));
  }
}

TEST(LogFaults, ALinkToAFolderIsFollowedAndALinkIsRotatedItself) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.Path() / "real");
  std::filesystem::create_directory_symlink(folder.Path() / "real", folder.Path() / "logs");
  WriteFile(folder / L"target", "target");
  std::filesystem::create_symlink(folder.Path() / "target", folder.Path() / "real/agent.log");
  FileAppender log(folder / L"logs/agent.log");
  log.SetMaxFileSize(-1);
  log.AppendLine(L"x");
  EXPECT_EQ(ReadFile(folder / L"real/agent.log"), "x\r\n");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path() / "real/agent_1.log"));
  EXPECT_EQ(ReadFile(folder / L"target"), "target");
}

TEST(LogFaults, NobodyElseMayWriteWhatIsMade) {
  const TempFolder folder;
  const mode_t mask = ::umask(0);
  FileAppender log(folder / L"logs/agent.log");
  log.AppendLine(L"x");
  ::umask(mask);
  struct stat status {};
  ASSERT_EQ(::stat((folder.Path() / "logs/agent.log").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0664U);
  ASSERT_EQ(::stat((folder.Path() / "logs").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0775U);
}

}  // namespace
}  // namespace Zelto::Utilities
