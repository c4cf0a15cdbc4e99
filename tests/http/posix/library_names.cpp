#include "tests/http/library_folder.h"

namespace Zelto::Testing {

LibraryNames GetLibraryNames() {
  return {{"libcurl.so.4"}, {{"libcrypto.so.3", "libssl.so.3"}, {"libcrypto.so.1.1", "libssl.so.1.1"}}};
}

}  // namespace Zelto::Testing
