#include "tests/http/library_folder.h"

namespace Zelto::Testing {

LibraryNames GetLibraryNames() {
  return {{"libcurl.dll", "libcurl-x64.dll"},
          {{"libeay32.dll", "ssleay32.dll"},
           {"libcrypto-3-x64.dll", "libssl-3-x64.dll"},
           {"libcrypto-1_1-x64.dll", "libssl-1_1-x64.dll"}}};
}

}  // namespace Zelto::Testing
