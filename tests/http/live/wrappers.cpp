#include "tests/http/live/wrappers.h"

#include "zelto/text/exceptions/win32_exception.h"

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

}  // namespace

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
