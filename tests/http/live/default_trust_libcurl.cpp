// The system's libcurl as if its built-in bundle of authorities were the file that ZELTO_TEST_BUNDLE names: each new
// handle starts with that. All other functions are those of the system's libcurl, which this library is linked to.
#include <dlfcn.h>

#include <cstdlib>

extern "C" {

int curl_easy_setopt(void* handle, int option, ...);
int curl_easy_perform(void* handle);
void curl_easy_cleanup(void* handle);

void* curl_easy_init() {
  constexpr int kCaInfo = 10065;
  static const auto init = reinterpret_cast<void* (*)()>(::dlsym(RTLD_NEXT, "curl_easy_init"));
  void* const handle = init();
  curl_easy_setopt(handle, kCaInfo, std::getenv("ZELTO_TEST_BUNDLE"));
  return handle;
}

// What this libcurl says to a server, with verification as it comes.
int plain_request(const char* url) {
  constexpr int kNoBody = 44;
  constexpr int kUrl = 10002;
  void* const handle = curl_easy_init();
  curl_easy_setopt(handle, kNoBody, 1L);
  curl_easy_setopt(handle, kUrl, url);
  const int result = curl_easy_perform(handle);
  curl_easy_cleanup(handle);
  return result;
}

}  // extern "C"
