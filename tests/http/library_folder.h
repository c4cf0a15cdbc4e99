/// @file
/// A folder with stand-ins for libcurl and OpenSSL under the names that are looked for, and sessions over them.
#pragma once

#include "tests/http/stand_in/stand_in.h"
#include "tests/support/temp_folder.h"
#include "zelto/http/curl_wrapper.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <gmock/gmock.h>
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

/// The calls since the last time, in their order.
inline std::string TakeCalls() {
  std::string text;
  for (const std::string& note : TakeNotes()) {
    text += note + "; ";
  }
  return text;
}

/// A folder with all three libraries.
struct LibraryFolder {
  LibraryFolder() {
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

  std::wstring Directory() const { return folder.Path().wstring(); }

  TempFolder folder;
  const LibraryNames names = GetLibraryNames();
};

/// Sessions over the stand-ins. The answers and the list of calls are what they are at first.
class StandInSession : public ::testing::Test, protected LibraryFolder {
 protected:
  class Session : public Utilities::CurlWrapper {
   public:
    using CurlWrapper::CurlWrapper;
    using CurlWrapper::ExecuteRequest;
    /// Without a proxy, a user agent, a CA file and limits.
    explicit Session(const std::wstring& directory, bool system_proxy = false)
        : CurlWrapper(directory, system_proxy, L"", L"", false, 0, 0) {}
  };

  StandInSession() {
    GetAnswers() = {};
    TakeNotes();
  }

  /// The calls of one GET.
  static std::string CallsOfGet(Utilities::ICurlWrapper& session, const std::wstring& url = L"http://h/") {
    TakeNotes();
    session.ExecuteGetRequest(url);
    return TakeCalls();
  }

  /// The headers of one GET.
  static std::string LinesOfGet(Utilities::ICurlWrapper& session) {
    const std::string calls = CallsOfGet(session);
    const std::size_t begin = calls.find("curl_easy_perform") + 17;
    return calls.substr(begin, calls.find(';', begin) - begin);
  }
};

}  // namespace Zelto::Testing
