#include "zelto/platform/debug_output.h"

namespace Zelto::Platform {

void WriteDebugText(const std::wstring&) noexcept {}

}  // namespace Zelto::Platform
