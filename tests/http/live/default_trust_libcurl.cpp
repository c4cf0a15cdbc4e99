// The system's libcurl as if its built-in bundle of authorities were the file that ZELTO_TEST_BUNDLE names: each new
// handle starts with that. All other functions are those of the system's libcurl, which this library is linked to.
#include <dlfcn.h>

#include <cstdlib>

extern "C" {

int curl_easy_setopt(void* handle, int option, ...);

void* curl_easy_init() {
  constexpr int kCaInfo = 10065;
  static const auto init = reinterpret_cast<void* (*)()>(::dlsym(RTLD_NEXT, "curl_easy_init"));
  void* const handle = init();
  curl_easy_setopt(handle, kCaInfo, std::getenv("ZELTO_TEST_BUNDLE"));
  return handle;
}

}  // extern "C"
