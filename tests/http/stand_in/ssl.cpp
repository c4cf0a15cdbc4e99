// Stands in for OpenSSL's second library: a certificate is a text that begins with "PEM".
#include "tests/http/stand_in/stand_in.h"

using Zelto::Testing::Note;

namespace {

constexpr char kModule[] = "ssl";
const Zelto::Testing::Presence<kModule> presence;

struct Text {
  std::string text;
};

}  // namespace

extern "C" {

void* SSL_CTX_get_cert_store(void* context) {
  return context;
}

Text* BIO_new_mem_buf(const char* text, int size) {
  Note("BIO_new_mem_buf " + std::to_string(size));
  return new Text{text};
}

int BIO_free(Text* bio) {
  Note("BIO_free");
  delete bio;
  return 1;
}

Text* PEM_read_bio_X509(Text* bio, void**, int (*ask)(char*, int, int, void*), void* user) {
  if (bio->text.compare(0, 9, "ENCRYPTED") == 0) {
    char password[8];
    Note(ask == nullptr ? "asks the terminal" : "password of " + std::to_string(ask(password, 8, 0, user)) + " bytes");
  }
  return bio->text.compare(0, 3, "PEM") == 0 ? new Text{bio->text} : nullptr;
}

int X509_STORE_add_cert(void* store, Text* certificate) {
  Note((store != nullptr ? "X509_STORE_add_cert " : "no store ") + certificate->text);
  return 1;
}

void X509_free(Text* certificate) {
  Note("X509_free");
  delete certificate;
}

}  // extern "C"
