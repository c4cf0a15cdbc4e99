// What newer libraries have besides: the function by which OpenSSL's new line is known, and one of libcurl's.
#include "tests/http/stand_in/stand_in.h"

extern "C" {

unsigned long OpenSSL_version_num() {
  return 0x30000000UL;
}

const void* curl_version_info(int) {
  static struct {
    int age = 0;
    const char* version = "8.0";
    unsigned int version_num = 0x080000;
    const char* host = "stand-in";
    int features = 0;
    const char* ssl_version = nullptr;
  } info;
  info.ssl_version = Zelto::Testing::GetAnswers().ssl_version.c_str();
  return &info;
}

}  // extern "C"
