#include "tests/support/diagnostics_recorder.h"
#include "tests/support/temp_folder.h"
#include "zelto/files/file_appender.h"
#include "zelto/platform/files.h"
#include "zelto/text/exceptions/file_system_exception.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace Zelto::Utilities {
namespace {

using namespace Zelto::Testing;

HANDLE OpenAlone(const std::wstring& path, DWORD share) {
  return ::CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
}

TEST(LogFaults, ALockedBackupIsThrownAndTheNextCallGoesOn) {
  const TempFolder folder;
  const std::wstring path = folder / L"agent.log";
  WriteFile(path, "0");
  WriteFile(folder / L"agent_1.log", "1");
  WriteFile(folder / L"agent_2.log", "2");
  FileAppender log(path);
  log.SetMaxFileSize(-1);
  const HANDLE lock = OpenAlone(folder / L"agent_1.log", FILE_SHARE_READ | FILE_SHARE_WRITE);
  ASSERT_NE(lock, INVALID_HANDLE_VALUE);
  try {
    log.AppendLine(L"lost");
    ADD_FAILURE() << "nothing thrown";
  } catch (const FileSystemException& e) {
    EXPECT_EQ(e.code().value(), static_cast<int>(Platform::kSharingViolation));
    EXPECT_EQ(e.path1(), folder / L"agent_1.log");
    EXPECT_EQ(e.path2(), folder / L"agent_2.log");
  }
  EXPECT_EQ(ReadFile(path) + ReadFile(folder / L"agent_3.log"), "02");
  ::CloseHandle(lock);
  log.AppendLine(L"x");
  EXPECT_EQ(ReadFile(path) + ReadFile(folder / L"agent_1.log") + ReadFile(folder / L"agent_2.log"), "x\r\n01");
  EXPECT_EQ(ReadFile(folder / L"agent_3.log"), "2");
}

TEST(LogFaults, ALogThatOthersDoNotShareLosesLines) {
  const TempFolder folder;
  const std::wstring path = folder / L"agent.log";
  WriteFile(path, "0\r\n");
  DiagnosticsRecorder reports;
  FileAppender log(path);
  const HANDLE lock = OpenAlone(path, FILE_SHARE_READ);
  ASSERT_NE(lock, INVALID_HANDLE_VALUE);
  log.AppendLine(L"lost");
  EXPECT_EQ(reports.Take(path), 1U);
  ::CloseHandle(lock);
  const HANDLE reader = OpenAlone(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
  log.AppendLine(L"x");
  ::CloseHandle(reader);
  EXPECT_EQ(ReadFile(path), "0\r\nx\r\n");
}

TEST(LogFaults, NothingButAFileOnADriveIsWrittenTo) {
  EXPECT_THROW(FileAppender(L"Q:\\logs\\agent\\agent.log").AppendLine(L"lost"), FileSystemException);
  const std::wstring pipe_name = L"\\\\.\\pipe\\zelto_log_test_" + std::to_wstring(::GetCurrentProcessId());
  const HANDLE pipe = ::CreateNamedPipeW(pipe_name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                         PIPE_TYPE_BYTE | PIPE_NOWAIT, 2, 512, 512, 0, nullptr);
  ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
  for (const std::wstring& path : {std::wstring(L"NUL"), pipe_name}) {
    Platform::AppendFile file;
    EXPECT_NE(file.Open(path, Platform::AppendFile::Missing::Create), Platform::kSuccess);
    EXPECT_FALSE(file.IsOpen());
  }
  DWORD available = 0;
  ::PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr);
  EXPECT_EQ(available, 0U);
  ::CloseHandle(pipe);
}

TEST(LogFaults, ADrivesRootIsAFolderWhereverTheProcessIsOnThatDrive) {
  const TempFolder folder;
  const std::wstring drive = (folder / L"x").substr(0, 2);
  const std::wstring name = L"\\zelto_log_" + std::to_wstring(::GetCurrentProcessId());
  const std::wstring current = L"=" + drive;
  ASSERT_TRUE(::SetEnvironmentVariableW(current.c_str(), (folder / L"gone\\deep").c_str()));
  for (const std::wstring& root : {drive, L"\\\\?\\" + drive}) {
    EXPECT_NO_THROW(FileAppender(root + name).AppendLine(L"x"));  // without the right to write there it is lost
    Platform::RemoveFile(drive + name);
  }
  ::SetEnvironmentVariableW(current.c_str(), nullptr);
}

TEST(LogFaults, PathsBeyondTheClassicLengthAndWithBackslashesWork) {
  const TempFolder folder;
  std::wstring path = folder.Path().wstring();
  for (int i = 0; i < 10; ++i) {
    path += L"\\" + std::wstring(50, static_cast<wchar_t>(L'a' + i));
  }
  path += L"\\agent.log";
  FileAppender log(path);
  log.SetMaxFileSize(-1);
  log.AppendLine(L"old");
  log.AppendLine(L"new");
  for (const wchar_t* name : {L"agent.log", L"agent_1.log"}) {
    const std::wstring full = path.substr(0, Platform::FileNameOffset(path)) + name;
    Platform::FileFacts facts;
    EXPECT_EQ(Platform::QueryFile(full, facts), Platform::kSuccess);
    EXPECT_EQ(facts.size, 5U);
    EXPECT_EQ(Platform::RemoveFile(full), Platform::kSuccess);
  }
  for (int i = 0; i < 10; ++i) {
    path.resize(path.rfind(L'\\'));
    EXPECT_TRUE(::RemoveDirectoryW((L"\\\\?\\" + path).c_str()));
  }
}

}  // namespace
}  // namespace Zelto::Utilities
