#include "zelto/platform/modules.h"

#include <dlfcn.h>

namespace Zelto::Platform {

void PinModule() noexcept {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<void*>(&PinModule), &info) != 0 && info.dli_fname != nullptr) {
    // The reference is kept on purpose. In a static build the name is the program's and nothing happens.
    ::dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
  }
}

}  // namespace Zelto::Platform
