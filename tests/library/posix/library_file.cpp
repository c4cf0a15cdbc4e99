#include "tests/library/library_file.h"

#include "zelto/library_version.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>
#include <string>

using Zelto::Utilities::LibraryVersion;
using Zelto::Utilities::Version;

Version VersionOfLibraryFile() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&LibraryVersion::Get), &info) == 0) {
    throw std::runtime_error("No library holds the version call");
  }
  const std::string name = std::filesystem::canonical(info.dli_fname).filename();
  const std::string ending = ".so.";
  return Version(name.substr(name.find(ending) + ending.size()) + ".0");
}
