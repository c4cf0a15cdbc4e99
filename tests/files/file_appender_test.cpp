#include "zelto/files/file_appender.h"

#include "tests/support/diagnostics_recorder.h"
#include "tests/support/small_stack_thread.h"
#include "tests/support/temp_folder.h"
#include "zelto/platform/files.h"
#include "zelto/text/exceptions/file_system_exception.h"
#include "zelto/text/exceptions/win32_exception.h"

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
  struct Case {
    int kibibytes;
    int backups;
    std::size_t size;
    std::wstring line;
    bool rotates;
  };
  const std::wstring pairs{0xD83D, 0xDE00, 0xD83D, 0xDE00};
  const Case cases[] = {
      {1, 65535, 1000, std::wstring(12, L'x'), false},
      {1, 65535, 1000, std::wstring(13, L'x'), true},
      {1, 65535, 1016, pairs, false},
      {1, 65535, 1017, pairs, true},
      {0, 65535, 5000000, L"x", false},
      {1, 0, 5000, L"x", false},
      {1, -1, 5000, L"x", false},
      {1, 1, 5000, L"x", true},
      {-1, 65535, 0, L"", true},
      {3000000, 65535, 5000, L"x", false},  // 3,072,000,000 bytes: more than 31 bits
      {1, 65535, 0, std::wstring(513, L'x'), true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.kibibytes << " KiB, " << c.backups << " backups, " << c.size << " bytes");
    const TempFolder folder;
    const std::wstring path = folder / L"agent.log";
    WriteFile(path, std::string(c.size, 'o'));
    FileAppender log(path);
    EXPECT_EQ(log.GetMaxFileSize(), FileAppender::noFileSizeLimit);
    EXPECT_EQ(log.GetMaxBackupFiles(), FileAppender::noBackupFileLimit);
    log.SetMaxFileSize(c.kibibytes);
    log.SetMaxBackupFiles(c.backups);
    log.AppendLine(c.line);
    EXPECT_EQ(Exists(folder / L"agent_1.log"), c.rotates);
    EXPECT_EQ(ReadFile(path).find('o') == std::string::npos, c.rotates || c.size == 0);
  }
}

TEST(FileAppender, DoesNotRotateAFileThatIsNotThere) {
  const TempFolder folder;
  FileAppender log(folder / L"agent.log");
  log.SetMaxFileSize(1);
  log.AppendLine(std::wstring(5000, L'x'));
  EXPECT_FALSE(Exists(folder / L"agent_1.log"));
  EXPECT_EQ(ReadFile(folder / L"agent.log").size(), 5002U);
}

TEST(FileAppender, ShiftsBackupsUpToTheGreatestNumberKept) {
  struct Case {
    int kept;
    std::string before;  // one letter per file: the log, backup 1, backup 2, ...; a hyphen is no file
    std::string after;
  };
  const Case cases[] = {
      {3, "0123", "-012"},      {3, "01-3", "-013"},   {3, "0", "-0"},
      {1, "01", "-0"},          {2, "01234", "-0134"},  // what is above the limit is left alone
      {65535, "0123", "-0123"},                         // none is lost
      {65535, "01-3", "-013"},                          // the chain ends at the gap
      {5, "-123", "-123"},                              // no log, nothing to shift
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.before + " keeping " + std::to_string(c.kept));
    const TempFolder folder;
    const auto name = [&](std::size_t i) {
      return folder / (i == 0 ? L"a.log" : L"a_" + std::to_wstring(i) + L".log");
    };
    for (std::size_t i = 0; i < c.before.size(); ++i) {
      if (c.before[i] != '-') {
        WriteFile(name(i), std::string(1, c.before[i]));
      }
    }
    OpenAppender log(name(0));
    log.SetMaxBackupFiles(c.kept);
    log.BackupFile(0, name(0));
    for (std::size_t i = 0; i < 7; ++i) {
      const std::string expected = i < c.after.size() && c.after[i] != '-' ? std::string(1, c.after[i]) : "";
      EXPECT_EQ(ReadFile(name(i)), expected) << i;
    }
  }
}

TEST(FileAppender, ShiftsFromABackupInTheMiddle) {
  const TempFolder folder;
  OpenAppender log(folder / L"unused");
  WriteFile(folder / L"a.log", "0");
  WriteFile(folder / L"a_1.log", "1");
  WriteFile(folder / L"a_2.log", "2");
  log.BackupFile(1, folder / L"a.log");
  EXPECT_EQ(ReadFile(folder / L"a.log") + ReadFile(folder / L"a_1.log"), "0");
  EXPECT_EQ(ReadFile(folder / L"a_2.log") + ReadFile(folder / L"a_3.log"), "12");
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
