#include "zelto/library_version.h"

namespace Zelto::Utilities {

Version LibraryVersion::Get() noexcept {
  return GetOfHeaders();
}

}  // namespace Zelto::Utilities
