#include "tests/support/temp_folder.h"
#include "zelto/files/file_appender.h"
#include "zelto/platform/errors.h"
#include "zelto/text/diagnostics.h"
#include "zelto/text/exceptions/file_system_exception.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <gtest/gtest.h>

namespace Zelto::Utilities {
namespace {

using namespace Zelto::Testing;

std::uint32_t CodeThrownFor(FileAppender& log, bool by_file_system_exception) {
  try {
    log.AppendLine(L"lost");
  } catch (const FileSystemException& e) {
    EXPECT_TRUE(by_file_system_exception);
    return static_cast<std::uint32_t>(e.code().value());
  } catch (const Win32Exception& e) {
    EXPECT_FALSE(by_file_system_exception);
    return e.GetErrorCode();
  }
  ADD_FAILURE() << "nothing thrown";
  return 0;
}

TEST(LogFaults, AFolderThatCannotBeMadeIsThrownAndAPathThatNamesNoFile) {
  const TempFolder folder;
  WriteFile(folder / L"file", "content");
  for (const bool wide : {false, true}) {
    const std::wstring name = wide ? L"\u0416.log" : L"\u00E9.log";
    FileAppender direct(folder / (L"file/" + name));
    EXPECT_EQ(CodeThrownFor(direct, true), Platform::kAlreadyExists);
    FileAppender deeper(folder / (L"file/" + name + L"/b/c/agent.log"));
    EXPECT_EQ(CodeThrownFor(deeper, true), Platform::kAlreadyExists);
  }
  WriteFile(folder / L"\u0416", "content");
  FileAppender log(folder / L"\u0416/agent.log");
  EXPECT_EQ(CodeThrownFor(log, false), Platform::kAlreadyExists);
  EXPECT_EQ(ReadFile(folder / L"file"), "content");
  FileAppender no_name((folder / L"agent.log") + std::wstring(L"\0.txt", 5));
  EXPECT_EQ(CodeThrownFor(no_name, true), Platform::kInvalidName);
  EXPECT_FALSE(Exists(folder / L"agent.log"));
}

TEST(LogFaults, AMoveThatFailsIsThrownAndTheLineNotWritten) {
  for (const bool wide : {false, true}) {
    const TempFolder folder;
    const std::wstring stem = wide ? L"\u0416" : L"agent";
    const std::wstring path = folder / (stem + L".log");
    std::filesystem::create_directory(Native(folder / (stem + L"_2.log")));
    WriteFile(path, "new\r\n");
    WriteFile(folder / (stem + L"_1.log"), "old\r\n");
    FileAppender log(path);
    log.SetMaxFileSize(-1);
    EXPECT_EQ(CodeThrownFor(log, !wide), Platform::kAccessDenied);
    EXPECT_EQ(ReadFile(path), "new\r\n");
    EXPECT_EQ(ReadFile(folder / (stem + L"_1.log")), "old\r\n");
    std::filesystem::remove(Native(folder / (stem + L"_2.log")));
    log.AppendLine(L"next");
    EXPECT_EQ(ReadFile(path), "next\r\n");
    EXPECT_EQ(ReadFile(folder / (stem + L"_2.log")), "old\r\n");
  }
}

TEST(LogFaults, AFolderInTheLogsPlaceStaysAndLosesLines) {
  const TempFolder folder;
  const std::wstring path = folder / L"agent.log";
  std::filesystem::create_directory(Native(path));
  FileAppender log(path);
  log.SetMaxFileSize(-1);
  int reports = 0;
  Diagnostics::SetSink([&](const std::wstring& text) {
    ++reports;
    EXPECT_NE(text.find(path), std::wstring::npos);
    log.AppendLine(text);  // a sink that logs to the same log is not called again
  });
  log.AppendLine(L"lost");
  Diagnostics::SetSink({});
  EXPECT_EQ(reports, 1);
  EXPECT_TRUE(std::filesystem::is_directory(Native(path)));
  EXPECT_FALSE(Exists(folder / L"agent_1.log"));
}

}  // namespace
}  // namespace Zelto::Utilities
