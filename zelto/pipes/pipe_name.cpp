#include "zelto/pipes/pipe_name.h"

#include "zelto/text/string_utilities.h"

#include <stdexcept>

namespace Zelto::Utilities {

std::wstring FullPipeName(const std::wstring& name) {
  static constexpr const wchar_t* kPrefix = L"\\\\.\\pipe\\";
  if (name.empty()) {
    throw std::runtime_error("Named pipe name should not be empty");
  }
  return StringUtilities::StartsWith(name, kPrefix) ? name : kPrefix + name;
}

}  // namespace Zelto::Utilities
