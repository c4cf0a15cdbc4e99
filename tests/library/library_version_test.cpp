#include "zelto/library_version.h"

#include "tests/library/library_file.h"

#include <gtest/gtest.h>

#include <string>

namespace Zelto::Utilities {
namespace {

TEST(LibraryVersion, IsTheProjectsInHeadersAndLibraryAndOnItsFile) {
  const Version project(std::string(ZELTO_PROJECT_VERSION) + ".0");
  EXPECT_EQ(LibraryVersion::Get(), project);
  EXPECT_EQ(LibraryVersion::GetOfHeaders(), project);
  EXPECT_EQ(VersionOfLibraryFile(), project) << VersionOfLibraryFile().ToCharString();
}

}  // namespace
}  // namespace Zelto::Utilities
