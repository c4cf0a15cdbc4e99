// Stands in for libcurl: notes every call with its arguments, and "transfers" what the test has laid out. Numbers of
// options are those of libcurl's own documentation.
#include "tests/http/stand_in/stand_in.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <map>
#include <string>
#include <utility>

using Zelto::Testing::GetAnswers;
using Zelto::Testing::Note;

namespace {

// Without data of its own, which ThreadSanitizer would take for a race when the module is loaded again.
const struct Presence {
  Presence() { Note("load curl"); }
  ~Presence() { Note("unload curl"); }
} presence;

constexpr int kHttpHeader = 10023;
constexpr int kPostFields = 10015;
constexpr int kPostFieldSize = 60;
constexpr int kWriteData = 10001;
constexpr int kWriteFunction = 20011;
constexpr int kContextData = 10109;
constexpr int kContextFunction = 20108;

constexpr std::pair<int, const char*> kNames[] = {
    {3, "PORT"},
    {13, "TIMEOUT"},
    {43, "NOPROGRESS"},
    {45, "FAILONERROR"},
    {47, "POST"},
    {52, "FOLLOWLOCATION"},
    {59, "PROXYPORT"},
    {60, "POSTFIELDSIZE"},
    {64, "VERIFYPEER"},
    {78, "CONNECTTIMEOUT"},
    {80, "HTTPGET"},
    {81, "VERIFYHOST"},
    {99, "NOSIGNAL"},
    {111, "PROXYAUTH"},
    {216, "SSL_OPTIONS"},
    {321, "CA_CACHE_TIMEOUT"},
    {10001, "WRITEDATA"},
    {10002, "URL"},
    {10004, "PROXY"},
    {10006, "PROXYUSERPWD"},
    {10015, "POSTFIELDS"},
    {10018, "USERAGENT"},
    {10023, "HTTPHEADER"},
    {10065, "CAINFO"},
    {10086, "SSLCERTTYPE"},
    {10097, "CAPATH"},
    {10109, "SSL_CTX_DATA"},
    {10177, "NOPROXY"},
    {20011, "WRITEFUNCTION"},
    {20108, "SSL_CTX_FUNCTION"},
};

struct List {
  std::string line;
  List* next;
};

struct Handle {
  std::map<int, long> numbers;
  std::map<int, void*> pointers;
};

bool IsPointer(int option) {
  return option > 20000 || option == kWriteData || option == kHttpHeader || option == kContextData;
}

}  // namespace

extern "C" {

int curl_global_init(long flags) {
  Note("curl_global_init " + std::to_string(flags));
  return GetAnswers().global_init;
}

void curl_global_cleanup() {
  Note("curl_global_cleanup");
}

void* curl_easy_init() {
  Note("curl_easy_init");
  return GetAnswers().easy_init ? new Handle : nullptr;
}

void curl_easy_cleanup(void* handle) {
  Note("curl_easy_cleanup");
  delete static_cast<Handle*>(handle);
}

int curl_easy_setopt(void* handle, int option, ...) {
  const auto name =
      std::find_if(std::begin(kNames), std::end(kNames), [=](auto& each) { return each.first == option; });
  std::string note = name == std::end(kNames) ? std::to_string(option) : name->second;
  va_list arguments;
  va_start(arguments, option);
  if (option < 10000) {
    const long number = va_arg(arguments, long);
    static_cast<Handle*>(handle)->numbers[option] = number;
    note.append(" ").append(std::to_string(number));
  } else {
    void* const pointer = va_arg(arguments, void*);
    static_cast<Handle*>(handle)->pointers[option] = pointer;
    if (pointer == nullptr || IsPointer(option)) {
      note += pointer == nullptr ? " null" : " set";
    } else {
      note.append(" '").append(static_cast<char*>(pointer)).append("'");
    }
  }
  va_end(arguments);
  Note(note);
  return option == GetAnswers().refused_option ? GetAnswers().refusal : 0;
}

List* curl_slist_append(List* list, const char* line) {
  Note(std::string("curl_slist_append ") + line);
  if (!GetAnswers().slist_append) {
    return nullptr;
  }
  auto* const added = new List{line, nullptr};
  List** end = &list;
  while (*end != nullptr) {
    end = &(*end)->next;
  }
  *end = added;
  return list;
}

void curl_slist_free_all(List* list) {
  Note(list == nullptr ? "curl_slist_free_all null" : "curl_slist_free_all");
  while (list != nullptr) {
    delete std::exchange(list, list->next);
  }
}

int curl_easy_perform(void* handle) {
  auto& self = *static_cast<Handle*>(handle);
  std::string note = "curl_easy_perform";
  for (auto* line = static_cast<List*>(self.pointers[kHttpHeader]); line != nullptr; line = line->next) {
    note.append(" [").append(line->line).append("]");
  }
  if (const auto* body = static_cast<const char*>(self.pointers[kPostFields])) {
    note.append(" {").append(body, static_cast<std::size_t>(self.numbers[kPostFieldSize])).append("}");
  }
  Note(note);
  if (void* const function = self.pointers[kContextFunction]) {
    int context = 0;
    reinterpret_cast<int (*)(void*, void*, void*)>(function)(handle, &context, self.pointers[kContextData]);
  }
  if (GetAnswers().during_transfer) {
    GetAnswers().during_transfer();
  }
  const auto write =
      reinterpret_cast<std::size_t (*)(char*, std::size_t, std::size_t, void*)>(self.pointers[kWriteFunction]);
  for (std::string piece : GetAnswers().body) {
    if (write(piece.data(), 1, piece.size(), self.pointers[kWriteData]) != piece.size()) {
      return 23;
    }
  }
  return GetAnswers().perform;
}

int curl_easy_getinfo(void*, int info, long* value) {
  Note("curl_easy_getinfo " + std::to_string(info));
  *value = GetAnswers().status;
  return 0;
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
  info.ssl_version = GetAnswers().ssl_version.c_str();
  return &info;
}

const char* curl_easy_strerror(int code) {
  static thread_local char text[40];
  std::snprintf(text, sizeof(text), "libcurl's text for %d", code);
  return text;
}

}  // extern "C"
