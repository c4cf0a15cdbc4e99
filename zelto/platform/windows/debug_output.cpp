#include "zelto/platform/debug_output.h"

#include <windows.h>

namespace Zelto::Platform {

void WriteDebugText(const std::wstring& text) noexcept {
  ::OutputDebugStringW(text.c_str());
}

}  // namespace Zelto::Platform
