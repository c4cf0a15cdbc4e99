#include "zelto/threading/failure_report.h"

#include "zelto/text/diagnostics.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <string>

namespace Zelto::Utilities {

void ReportFailure(std::wstring_view what) noexcept {
  try {
    Diagnostics::Report(std::wstring(what));
  } catch (...) {  // no memory for the text
  }
}

void ReportFailure(std::wstring_view what, const std::exception& error) noexcept {
  try {
    std::wstring text(what);
    text += L": ";
    for (const char* byte = error.what(); *byte != '\0'; ++byte) {
      text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(*byte)));
    }
    ReportFailure(text);
  } catch (...) {
    ReportFailure(what);
  }
}

void ReportFailure(std::wstring_view what, const char* message, std::uint32_t code) noexcept {
  try {
    ReportFailure(what, Win32Exception(message, code));
  } catch (...) {  // no memory for the exception
    ReportFailure(what);
  }
}

void ReportCurrentException(std::wstring_view what) noexcept {
  try {
    throw;
  } catch (const std::exception& error) {
    ReportFailure(what, error);
  } catch (...) {
    ReportFailure(what);
  }
}

}  // namespace Zelto::Utilities
