// A folder of a test's own, and files in it, by wide path.
#pragma once

#include "zelto/platform/process.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace Zelto::Testing {

inline std::filesystem::path Native(const std::wstring& path) {
  return std::filesystem::path(std::u16string(path.begin(), path.end()));
}

inline void WriteFile(const std::wstring& path, const std::string& bytes) {
  std::ofstream(Native(path), std::ios::binary) << bytes;
}

inline std::string ReadFile(const std::wstring& path) {
  std::ifstream file(Native(path), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

inline bool Exists(const std::wstring& path) {
  return std::filesystem::exists(std::filesystem::symlink_status(Native(path)));
}

/// An empty folder, removed with everything in it.
class TempFolder {
 public:
  TempFolder() {
    static std::atomic<int> count{0};
    const std::string name = "zelto_" + std::to_string(Platform::CurrentProcessId()) + "_" + std::to_string(++count);
    path_ = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& Path() const { return path_; }

  /// The wide path of a name in the folder.
  std::wstring operator/(const std::wstring& name) const {
    const std::u16string path = (path_ / Native(name)).u16string();
    return std::wstring(path.begin(), path.end());
  }

 private:
  std::filesystem::path path_;
};

}  // namespace Zelto::Testing
