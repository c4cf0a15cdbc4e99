#include "tests/http/live/wrappers.h"

#include "zelto/text/exceptions/win32_exception.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

namespace Zelto::Testing {

namespace {

using Utilities::CurlWrapper;

std::string OutcomeOf(CurlWrapper& wrapper, void (CurlWrapper::*request)(const std::wstring&),
                      const std::wstring& url) {
  wrapper.ClearHeaders();
  try {
    (wrapper.*request)(url);
  } catch (const Utilities::Win32Exception& failure) {
    return "error " + std::to_string(failure.GetErrorCode());
  }
  return std::to_string(wrapper.GetHttpStatusCode());
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

CurlWrapper NewWrapper(const Setup& setup) {
  return CurlWrapper(setup.libraries, false, L"", setup.ca_file, setup.fail_on_error, setup.connect_timeout_s,
                     setup.timeout_s);
}

std::string Get(CurlWrapper& wrapper, const std::wstring& url) {
  return OutcomeOf(wrapper, &CurlWrapper::ExecuteGetRequest, url);
}

std::string Post(CurlWrapper& wrapper, const std::wstring& url) {
  return OutcomeOf(wrapper, &CurlWrapper::ExecutePostRequest, url);
}

}  // namespace Zelto::Testing
