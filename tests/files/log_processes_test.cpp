#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"
#include "zelto/files/file_appender.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace Zelto::Utilities {
namespace {

using namespace Zelto::Testing;

constexpr std::size_t kFilling = 200;  // units behind each number

// The numbers of the lines in all files of a folder, with how often each occurs; every line must be whole.
std::map<int, int> CollectLines(const std::filesystem::path& folder) {
  std::map<int, int> numbers;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    for (std::string line; std::getline(file, line);) {
      EXPECT_TRUE(line.ends_with('\r') && !file.eof()) << "a torn line in " << entry.path();
      int number = -1;
      std::string filling;
      std::istringstream(line) >> number >> filling;
      EXPECT_EQ(filling, std::string(kFilling, filling.empty() ? '?' : filling[0])) << entry.path();
      ++numbers[number];
    }
  }
  return numbers;
}

std::vector<std::string> WriterArguments(const TempFolder& folder, const std::string& name, int lines, int kibibytes) {
  return {(folder.Path() / "agent.log").string(), name, std::to_string(lines), std::to_string(kibibytes)};
}

TEST(LogProcesses, LinesOfTwoProcessesDoNotMix) {
  constexpr int kLines = 500;
  const TempFolder folder;
  ChildProcess first("log_writer", WriterArguments(folder, "A", kLines, 0));
  ChildProcess second("log_writer", WriterArguments(folder, "B", kLines, 0));
  for (ChildProcess* writer : {&first, &second}) {
    while (!writer->ReadLine().empty()) {
    }
    EXPECT_EQ(writer->Wait(), 0);
  }
  const std::map<int, int> lines = CollectLines(folder.Path());
  EXPECT_EQ(lines.size(), static_cast<std::size_t>(kLines));
  for (const auto& [number, count] : lines) {
    EXPECT_EQ(count, 2) << number;
  }
}

// With a negative limit every line rotates the whole chain, so a kill nearly always falls into a rotation.
TEST(LogProcesses, AProcessKilledWhileItRotatesLosesNoLine) {
  for (int round = 0; round < 6; ++round) {
    const TempFolder folder;
    ChildProcess writer("log_writer", WriterArguments(folder, "A", 0, -1));
    std::string line;
    int said = -1;
    while (said < 8 + 2 * round && !(line = writer.ReadLine()).empty()) {
      said = std::stoi(line);
    }
    writer.Kill();
    while (!(line = writer.ReadLine()).empty()) {
      said = std::stoi(line);
    }
    EXPECT_EQ(writer.Wait(), -1);
    const int written = static_cast<int>(CollectLines(folder.Path()).size());
    EXPECT_TRUE(written == said + 1 || written == said + 2) << written << " lines, the last said is " << said;

    FileAppender next(folder / L"agent.log");
    next.SetMaxFileSize(1);
    for (int i = 0; i < 20; ++i) {
      next.AppendLine(std::to_wstring(written + i) + L" " + std::wstring(kFilling, L'N'));
    }
    const std::map<int, int> lines = CollectLines(folder.Path());
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(written + 20));
    EXPECT_EQ(lines.begin()->first, 0);
    EXPECT_EQ(lines.rbegin()->first, written + 19);
  }
}

}  // namespace
}  // namespace Zelto::Utilities
