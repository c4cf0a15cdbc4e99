/// @file
/// What the stand-ins for libcurl and OpenSSL share with the tests: a list of the calls, and what they are to answer.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace Zelto::Testing {

struct Answers {
  int global_init = 0;        ///< result of curl_global_init
  bool easy_init = true;      ///< whether curl_easy_init gives a handle
  bool slist_append = true;   ///< whether curl_slist_append has memory
  bool crypto_malloc = true;  ///< whether CRYPTO_malloc has memory
  int refused_option = 0;     ///< the option that curl_easy_setopt refuses, with `refusal`
  int refusal = 0;
  std::string ssl_version = "OpenSSL/3.0";  ///< of curl_version_info
  int perform = 0;                          ///< result of curl_easy_perform, when the body was taken
  long status = 200;
  std::vector<std::string> body;          ///< pieces
  std::function<void()> during_transfer;  ///< called within curl_easy_perform
  std::function<void()> during_cleanup;   ///< called within curl_easy_cleanup
};

/// The callbacks that an OpenSSL without locks of its own was given.
struct LockingCallbacks {
  std::atomic<void (*)(int mode, int lock, const char* file, int line)> lock{nullptr};
  std::atomic<void (*)(unsigned long* id)> thread_id{nullptr};
};
inline constexpr int kLocks = 3;

Answers& GetAnswers();
LockingCallbacks& GetLockingCallbacks();

/// Adds a call to the list, unless the list is closed.
void Note(std::string call);
/// The calls since the last time.
std::vector<std::string> TakeNotes();
/// A closed list takes nothing and is no meeting point of threads.
void CloseNotes(bool closed);

/// Notes that a module comes and goes. Has no data, which ThreadSanitizer would take for a race when the module is
/// loaded again.
template <const char* kModule>
struct Presence {
  Presence() { Note(std::string("load ") + kModule); }
  ~Presence() { Note(std::string("unload ") + kModule); }
};

}  // namespace Zelto::Testing
