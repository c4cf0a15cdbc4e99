#include "zelto/platform/files.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace Zelto::Platform {
namespace {

using namespace Zelto::Testing;
using Missing = AppendFile::Missing;

bool IsMissing(ErrorCode code) {
  return code == kFileNotFound || code == kPathNotFound;
}

TEST(Files, AFileIsMadeGrownMovedAndRemovedByItsWideName) {
  for (const std::wstring& name : {std::wstring(L"a.log"), std::wstring(L"with blanks .log"),
                                   std::wstring(L"\u00E9\u0416\u65E5.log"), std::wstring{0xD83D, 0xDE00}}) {
    SCOPED_TRACE(Native(name));
    const TempFolder folder;
    const std::wstring inside = folder / name;
    FileFacts facts;
    EXPECT_TRUE(IsMissing(QueryFile(inside, facts)));
    ASSERT_EQ(CreateFolder(inside), kSuccess);
    EXPECT_EQ(CreateFolder(inside), kAlreadyExists);
    EXPECT_EQ(QueryFile(inside, facts), kSuccess);
    EXPECT_TRUE(facts.is_folder);
    EXPECT_EQ(facts.size, 0U);

    const std::wstring path = inside + L"/" + name;
    AppendFile file;
    EXPECT_TRUE(IsMissing(file.Open(path, Missing::Fail)));
    ASSERT_EQ(file.Open(path, Missing::Create), kSuccess);
    EXPECT_EQ(file.Append("12345"), kSuccess);
    EXPECT_EQ(file.Append(""), kSuccess);
    EXPECT_EQ(file.Close(), kSuccess);
    EXPECT_EQ(QueryFile(path, facts), kSuccess);
    EXPECT_FALSE(facts.is_folder);
    EXPECT_EQ(facts.size, 5U);

    const std::wstring moved = folder / (name + L"2");
    WriteFile(moved, "replaced");
    EXPECT_EQ(RenameFile(path, moved), kSuccess);
    EXPECT_EQ(ReadFile(moved), "12345");
    EXPECT_TRUE(IsMissing(RenameFile(path, moved)));
    EXPECT_EQ(RemoveFile(moved), kSuccess);
    EXPECT_TRUE(IsMissing(RemoveFile(moved)));
  }
}

TEST(Files, ErrorsAreTheSameCodesOnBothTargets) {
  const TempFolder folder;
  WriteFile(folder / L"file", "x");
  ASSERT_EQ(CreateFolder(folder / L"folder"), kSuccess);
  AppendFile file;
  FileFacts facts;
  EXPECT_TRUE(IsMissing(QueryFile(folder / L"file/below", facts)));
  EXPECT_TRUE(IsMissing(CreateFolder(folder / L"file/below")));
  EXPECT_TRUE(IsMissing(CreateFolder(folder / L"absent/below")));
  EXPECT_EQ(CreateFolder(folder / L"file"), kAlreadyExists);
  EXPECT_TRUE(IsMissing(file.Open(folder / L"absent/below", Missing::Create)));
  EXPECT_EQ(file.Open(folder / L"folder", Missing::Create), kAccessDenied);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(RenameFile(folder / L"file", folder / L"folder"), kAccessDenied);
  EXPECT_EQ(RemoveFile(folder / L"folder"), kAccessDenied);
  EXPECT_EQ(ReadFile(folder / L"file"), "x");
}

TEST(Files, AZeroUnitInAPathIsRefusedAndNotAnEnd) {
  const TempFolder folder;
  WriteFile(folder / L"file", "x");
  const std::wstring path = (folder / L"file") + std::wstring(L"\0x", 2);
  AppendFile file;
  FileFacts facts;
  EXPECT_EQ(QueryFile(path, facts), kInvalidName);
  EXPECT_EQ(CreateFolder(path), kInvalidName);
  EXPECT_EQ(RenameFile(path, folder / L"other"), kInvalidName);
  EXPECT_EQ(RenameFile(folder / L"file", path), kInvalidName);
  EXPECT_EQ(RemoveFile(path), kInvalidName);
  EXPECT_EQ(file.Open(path, Missing::Create), kInvalidName);
  EXPECT_EQ(ReadFile(folder / L"file"), "x");
}

TEST(Files, AppendersAlwaysWriteAtTheEndThatTheFileHasThen) {
  const TempFolder folder;
  const std::wstring path = folder / L"file";
  AppendFile first;
  AppendFile second;
  ASSERT_EQ(first.Open(path, Missing::Create), kSuccess);
  ASSERT_EQ(second.Open(path, Missing::Fail), kSuccess);
  EXPECT_EQ(first.Append("1"), kSuccess);
  EXPECT_EQ(second.Append("2"), kSuccess);
  EXPECT_EQ(first.Append("3"), kSuccess);
  EXPECT_EQ(ReadFile(path), "123");
  ASSERT_EQ(second.Open(path, Missing::Fail), kSuccess);
  EXPECT_EQ(second.SizeAtOpen(), 3U);
  EXPECT_EQ(RenameFile(path, folder / L"moved"), kSuccess);
  EXPECT_EQ(second.Append("4"), kSuccess);
  EXPECT_EQ(ReadFile(folder / L"moved"), "1234");
  EXPECT_EQ(RemoveFile(folder / L"moved"), kSuccess);
}

TEST(Files, TheFileNameBeginsBehindTheLastSeparator) {
  const std::pair<const wchar_t*, std::size_t> cases[] = {
      {L"", 0}, {L"a.log", 0}, {L"/a", 1}, {L"x/y.z/a", 6}, {L"x//a", 3}, {L"x/", 2},
  };
  for (const auto& [path, offset] : cases) {
    EXPECT_EQ(FileNameOffset(path), offset) << Native(path);
  }
  EXPECT_TRUE(IsPathSeparator(L'/'));
  EXPECT_FALSE(IsPathSeparator(L'.'));
}

}  // namespace
}  // namespace Zelto::Platform
