/// @file
/// A folder with stand-ins for libcurl and OpenSSL under the names that are looked for.
#pragma once

#include "tests/http/stand_in/stand_in.h"
#include "tests/support/temp_folder.h"
#include "zelto/http/curl_wrapper.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace Zelto::Testing {

/// The names on this target, in the order in which they are looked for.
struct LibraryNames {
  std::vector<std::string> curl;
  std::vector<std::pair<std::string, std::string>> openssl;
};
LibraryNames GetLibraryNames();

/// What an operation threw: its text up to ": " and the system's description, and its code; "" and 0 when nothing.
struct Thrown {
  std::string text;
  std::uint32_t code = 0;
  bool operator==(const Thrown&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Thrown& thrown) {
  return out << thrown.text << " (" << thrown.code << ")";
}

template <class Operation>
Thrown Catch(const Operation& operation) {
  try {
    operation();
    return {};
  } catch (const Utilities::Win32Exception& error) {
    const std::string text = error.what();
    const std::size_t end = text.rfind(": ", text.find(". Error Code: "));
    return {text.substr(0, end), error.GetErrorCode()};
  } catch (const std::exception& error) {
    return {error.what(), 0};
  }
}

/// Puts the answers and the list of calls back to what they are at first; has a folder with all three libraries.
class LibraryFolder : public ::testing::Test {
 protected:
  LibraryFolder() {
    GetAnswers() = {};
    TakeNotes();
    Put("curl", names.curl[0]);
    Put("crypto", names.openssl[0].first);
    Put("ssl", names.openssl[0].second);
  }

  /// Copies a stand-in into the folder.
  void Put(const std::string& module, const std::string& name) {
    std::filesystem::copy_file(std::filesystem::path(STAND_IN_FOLDER) / (module + ".module"), folder.Path() / name,
                               std::filesystem::copy_options::overwrite_existing);
  }
  void Remove(const std::string& name) { std::filesystem::remove(folder.Path() / name); }

  std::wstring Directory() const { return (folder / L"x").substr(0, (folder / L"x").size() - 2); }

  TempFolder folder;
  const LibraryNames names = GetLibraryNames();
};

/// A session over the stand-ins with an ordinary set of arguments.
class StandInSession : public LibraryFolder {
 protected:
  class Session : public Utilities::CurlWrapper {
   public:
    using CurlWrapper::CurlWrapper;
    using CurlWrapper::ExecuteRequest;
  };

  /// The calls of one GET.
  static std::vector<std::string> NotesOfGet(Utilities::ICurlWrapper& session, const std::wstring& url = L"http://h/") {
    TakeNotes();
    session.ExecuteGetRequest(url);
    return TakeNotes();
  }

  /// The headers of one GET.
  static std::string LinesOfGet(Utilities::ICurlWrapper& session) {
    for (const std::string& note : NotesOfGet(session)) {
      if (note.starts_with("curl_easy_perform")) {
        return note.substr(17);
      }
    }
    return "no transfer";
  }
};

}  // namespace Zelto::Testing
