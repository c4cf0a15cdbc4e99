#include "tests/http/live/wrappers.h"

#include "zelto/text/exceptions/win32_exception.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

namespace Zelto::Testing {

namespace {

template <typename Request>
Outcome OutcomeOf(Utilities::CurlWrapper& wrapper, const Request& request) {
  try {
    request();
  } catch (const Utilities::Win32Exception& failure) {
    return {0, failure.GetErrorCode(), failure.what()};
  }
  return Answered(wrapper.GetHttpStatusCode());
}

std::wstring FindSystemLibraries() {
  void* const libcurl = ::dlopen("libcurl.so.4", RTLD_LAZY | RTLD_LOCAL);
  Dl_info info{};
  if (libcurl == nullptr || ::dladdr(::dlsym(libcurl, "curl_easy_init"), &info) == 0) {
    throw std::runtime_error("this machine has no libcurl.so.4");
  }
  const std::wstring folder = std::filesystem::path(info.dli_fname).parent_path().wstring();
  ::dlclose(libcurl);
  return folder;
}

}  // namespace

std::wstring SystemLibraries() {
  static const std::wstring folder = FindSystemLibraries();
  return folder;
}

Utilities::CurlWrapper NewWrapper(const Setup& setup) {
  return Utilities::CurlWrapper(setup.libraries, setup.system_proxy, kUserAgent, setup.ca_file, setup.fail_on_error,
                                setup.connect_timeout_s, setup.timeout_s);
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return outcome.error == 0 ? stream << "status " << outcome.status
                            : stream << "error " << outcome.error << " (" << outcome.text << ")";
}

Outcome Get(Utilities::CurlWrapper& wrapper, const std::wstring& url) {
  wrapper.ClearHeaders();
  return OutcomeOf(wrapper, [&] { wrapper.ExecuteGetRequest(url); });
}

Outcome Post(Utilities::CurlWrapper& wrapper, const std::wstring& url) {
  wrapper.ClearHeaders();
  return OutcomeOf(wrapper, [&] { wrapper.ExecutePostRequest(url); });
}

}  // namespace Zelto::Testing
