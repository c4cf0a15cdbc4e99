// Stands in for OpenSSL's first library: the functions with which the old line was given its locks.
#include "tests/http/stand_in/stand_in.h"

#include <cstdlib>

using Zelto::Testing::GetAnswers;
using Zelto::Testing::GetLockingCallbacks;
using Zelto::Testing::Note;

namespace {

constexpr char kModule[] = "crypto";
const Zelto::Testing::Presence<kModule> presence;

}  // namespace

extern "C" {

void* CRYPTO_malloc(int size, const char* file, int line) {
  Note("CRYPTO_malloc " + std::to_string(size / static_cast<int>(sizeof(void*))) + " " + file +
       (line > 0 ? " line" : " no line"));
  return GetAnswers().crypto_malloc ? std::malloc(static_cast<std::size_t>(size)) : nullptr;
}

void CRYPTO_free(void* memory) {
  Note("CRYPTO_free");
  std::free(memory);
}

int CRYPTO_num_locks() {
  return Zelto::Testing::kLocks;
}

void CRYPTO_set_locking_callback(void (*callback)(int, int, const char*, int)) {
  Note(callback != nullptr ? "CRYPTO_set_locking_callback" : "CRYPTO_set_locking_callback null");
  GetLockingCallbacks().lock = callback;
}

int CRYPTO_THREADID_set_callback(void (*callback)(unsigned long*)) {
  Note(callback != nullptr ? "CRYPTO_THREADID_set_callback" : "CRYPTO_THREADID_set_callback null");
  GetLockingCallbacks().thread_id = callback;
  return 1;
}

void CRYPTO_THREADID_set_numeric(unsigned long* id, unsigned long value) {
  *id = value;
}

}  // extern "C"
