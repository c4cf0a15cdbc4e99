#include "zelto/files/file_appender.h"

#include "tests/support/diagnostics_recorder.h"
#include "tests/support/small_stack_thread.h"
#include "tests/support/temp_folder.h"
#include "zelto/platform/files.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace Zelto::Utilities {
namespace {

using namespace Zelto::Testing;
using namespace std::string_literals;

static_assert(std::is_base_of_v<IFileAppender, FileAppender> && std::has_virtual_destructor_v<IFileAppender>);

class OpenAppender : public FileAppender {
 public:
  using FileAppender::BackupFile;
  using FileAppender::FileAppender;
};

TEST(FileAppender, WritesLinesInUtf8WithTheirEnds) {
  const TempFolder folder;
  const std::wstring path = folder / L"agent.log";
  const std::unique_ptr<IFileAppender> log = std::make_unique<FileAppender>(path);
  EXPECT_FALSE(Exists(path));
  log->AppendLine(L"first");
  log->AppendLine(L"");
  log->AppendLine(L"\u00E9\u20AC");
  log->AppendLine(std::wstring{0xD83D, 0xDE00});
  log->AppendLine(std::wstring(L"a\0b", 3));
  log->AppendLine(L"\nx\n\ny");
  EXPECT_EQ(ReadFile(path), "first\r\n\r\n\xC3\xA9\xE2\x82\xAC\r\n\xF0\x9F\x98\x80\r\na\0b\r\n\r\nx\r\n\r\ny\r\n"s);
}

TEST(FileAppender, DropsALineWithoutUtf8FormWholeAndReportsIt) {
  const TempFolder folder;
  const std::wstring path = folder / L"agent.log";
  DiagnosticsRecorder reports;
  FileAppender log(path);
  log.AppendLine(L"before");
  for (const std::wstring& line :
       {std::wstring{L'a', 0xD83D}, std::wstring{0xDE00, L'a'}, std::wstring{0xD83D, L'a'}}) {
    log.AppendLine(line);
    EXPECT_EQ(reports.Take(path), 1U);
  }
  log.AppendLine(L"after");
  EXPECT_EQ(ReadFile(path), "before\r\nafter\r\n");
  EXPECT_EQ(reports.Take(path), 0U);
}

TEST(FileAppender, RotatesWhenTheEstimateIsAboveTheLimit) {
  const auto expect = [](int kibibytes, int backups, std::size_t size, const std::wstring& line, bool rotates) {
    SCOPED_TRACE(testing::Message() << kibibytes << " KiB, " << backups << " backups, " << size << " bytes");
    const TempFolder folder;
    const std::wstring path = folder / L"agent.log";
    WriteFile(path, std::string(size, 'o'));
    FileAppender log(path);
    log.SetMaxFileSize(kibibytes);
    log.SetMaxBackupFiles(backups);
    log.AppendLine(line);
    EXPECT_EQ(Exists(folder / L"agent_1.log"), rotates);
    EXPECT_EQ(ReadFile(path).find('o') == std::string::npos, rotates || size == 0);
  };
  const int any = FileAppender::noBackupFileLimit;
  const std::wstring pairs{0xD83D, 0xDE00, 0xD83D, 0xDE00};
  expect(1, any, 1000, std::wstring(12, L'x'), false);
  expect(1, any, 1000, std::wstring(13, L'x'), true);
  expect(1, any, 1016, pairs, false);
  expect(1, any, 1017, pairs, true);
  expect(FileAppender::noFileSizeLimit, any, 5000000, L"x", false);
  expect(1, 0, 5000, L"x", false);
  expect(1, -1, 5000, L"x", false);
  expect(1, 1, 5000, L"x", true);
  expect(-1, any, 0, L"", true);
  expect(3000000, any, 5000, L"x", false);  // 3,072,000,000 bytes: more than 31 bits
  expect(1, any, 0, std::wstring(513, L'x'), true);

  const TempFolder folder;
  FileAppender log(folder / L"agent.log");
  EXPECT_EQ(log.GetMaxFileSize(), FileAppender::noFileSizeLimit);
  EXPECT_EQ(log.GetMaxBackupFiles(), 65535);
  log.SetMaxFileSize(1);
  log.AppendLine(std::wstring(5000, L'x'));
  EXPECT_FALSE(Exists(folder / L"agent_1.log")) << "a file that was not there";
  EXPECT_EQ(ReadFile(folder / L"agent.log").size(), 5002U);
}

TEST(FileAppender, ShiftsBackupsUpToTheGreatestNumberKept) {
  // The files with one letter each: the log, backup 1, backup 2, ...; a hyphen is no file.
  const auto expect = [](int kept, const std::string& before, const std::string& after, int from = 0) {
    SCOPED_TRACE(before + " keeping " + std::to_string(kept));
    const TempFolder folder;
    const auto name = [&](std::size_t i) {
      return folder / (i == 0 ? L"a.log" : L"a_" + std::to_wstring(i) + L".log");
    };
    for (std::size_t i = 0; i < before.size(); ++i) {
      if (before[i] != '-') {
        WriteFile(name(i), before.substr(i, 1));
      }
    }
    OpenAppender log(name(0));
    log.SetMaxBackupFiles(kept);
    log.BackupFile(from, name(0));
    for (std::size_t i = 0; i < after.size(); ++i) {
      EXPECT_EQ(ReadFile(name(i)), after[i] == '-' ? "" : after.substr(i, 1)) << i;
    }
  };
  expect(3, "0123", "-012-");
  expect(3, "01-3", "-013-");
  expect(3, "0", "-0-");
  expect(1, "01", "-0-");
  expect(2, "01234", "-0134-");     // what is above the limit is left alone
  expect(65535, "0123", "-0123-");  // none is lost
  expect(65535, "01-3", "-013-");   // the chain ends at the gap
  expect(5, "-123", "-123-");       // no log, nothing to shift
  expect(65535, "012", "0-12-", 1);
}

TEST(FileAppender, ShiftsALongChainOnASmallStack) {
  constexpr int kCount = 1000;
  const TempFolder folder;
  for (int i = 1; i <= kCount; ++i) {
    WriteFile(folder / (L"a_" + std::to_wstring(i) + L".log"), std::to_string(i));
  }
  WriteFile(folder / L"a.log", std::string(2000, 'o'));
  FileAppender log(folder / L"a.log");
  log.SetMaxFileSize(1);
  RunOnSmallStack(128 * 1024, [&log] { log.AppendLine(L"x"); });
  EXPECT_EQ(ReadFile(folder / L"a.log"), "x\r\n");
  EXPECT_EQ(ReadFile(folder / L"a_1.log"), std::string(2000, 'o'));
  EXPECT_EQ(ReadFile(folder / (L"a_" + std::to_wstring(kCount + 1) + L".log")), std::to_string(kCount));
}

TEST(FileAppender, NumbersBackupsBeforeTheExtensionOfTheFileName) {
  const std::pair<std::wstring, std::wstring> cases[] = {
      {L"agent.log", L"agent_1.log"},
      {L"agent", L"agent_1"},
      {L"v1.2/agent", L"v1.2/agent_1"},
      {L"v1.2/agent.old.log", L"v1.2/agent.old_1.log"},
      {L".agent", L"_1.agent"},
      {L"\u65E5\u672C.log", L"\u65E5\u672C_1.log"},
      {{0xD83D, 0xDE00, L'.', L'l'}, {0xD83D, 0xDE00, L'_', L'1', L'.', L'l'}},
  };
  for (const auto& [name, backup] : cases) {
    const TempFolder folder;
    FileAppender log(folder / name);
    log.SetMaxFileSize(-1);
    log.AppendLine(L"old");
    log.AppendLine(L"new");
    EXPECT_EQ(ReadFile(folder / name), "new\r\n") << Native(name);
    EXPECT_EQ(ReadFile(folder / backup), "old\r\n") << Native(name);
  }
}

TEST(FileAppender, MakesMissingFolders) {
  const TempFolder folder;
  std::wstring deep = L"x";
  for (int i = 0; i < 30; ++i) {
    deep += L"/" + std::to_wstring(i);
  }
  for (const std::wstring& name : {std::wstring(L"a/agent.log"), std::wstring(L"b/\u00E9/\u20AC//c/agent.log"), deep}) {
    FileAppender log(folder / name);
    log.AppendLine(L"x");
    Platform::FileFacts facts;
    EXPECT_EQ(Platform::QueryFile(folder / name, facts), Platform::kSuccess) << Native(name);
    EXPECT_EQ(facts.size, 3U) << Native(name);
  }
}

}  // namespace
}  // namespace Zelto::Utilities
