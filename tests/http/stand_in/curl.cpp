// Stands in for libcurl: notes every call with its arguments, and "transfers" what the test has laid out.
#include "tests/http/stand_in/stand_in.h"

#include <cstdarg>
#include <cstdio>
#include <map>
#include <sstream>
#include <string>
#include <utility>

using Zelto::Testing::GetAnswers;
using Zelto::Testing::Note;

namespace {

constexpr char kModule[] = "curl";
const Zelto::Testing::Presence<kModule> presence;

// The options by the numbers of libcurl's own documentation.
constexpr char kOptions[] =
    "3 PORT 13 TIMEOUT 43 NOPROGRESS 45 FAILONERROR 47 POST 52 FOLLOWLOCATION 59 PROXYPORT 60 POSTFIELDSIZE "
    "64 VERIFYPEER 78 CONNECTTIMEOUT 80 HTTPGET 81 VERIFYHOST 99 NOSIGNAL 111 PROXYAUTH 216 SSL_OPTIONS "
    "321 CA_CACHE_TIMEOUT 10001 WRITEDATA 10002 URL 10004 PROXY 10006 PROXYUSERPWD 10015 POSTFIELDS 10018 USERAGENT "
    "10023 HTTPHEADER 10065 CAINFO 10086 SSLCERTTYPE 10097 CAPATH 10109 SSL_CTX_DATA 10177 NOPROXY "
    "20011 WRITEFUNCTION 20108 SSL_CTX_FUNCTION";

std::string NameOf(int option) {
  std::istringstream table(kOptions);
  std::string name;
  for (int number = 0; table >> number >> name && number != option;) {
  }
  return table ? name : std::to_string(option);
}

struct List {
  std::string line;
  List* next;
};

struct Handle {
  std::map<std::string, long> numbers;
  std::map<std::string, void*> pointers;
};

bool IsText(int option, const std::string& name) {
  return option < 20000 && name != "WRITEDATA" && name != "HTTPHEADER" && name != "SSL_CTX_DATA";
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
  if (GetAnswers().during_cleanup) {
    GetAnswers().during_cleanup();
  }
  delete static_cast<Handle*>(handle);
}

int curl_easy_setopt(void* handle, int option, ...) {
  auto& self = *static_cast<Handle*>(handle);
  const std::string name = NameOf(option);
  va_list arguments;
  va_start(arguments, option);
  if (option < 10000) {
    const long number = va_arg(arguments, long);
    self.numbers[name] = number;
    Note(name + " " + std::to_string(number));
  } else {
    void* const pointer = va_arg(arguments, void*);
    self.pointers[name] = pointer;
    Note(name + (pointer == nullptr     ? " null"
                 : IsText(option, name) ? std::string(" '") + static_cast<char*>(pointer) + "'"
                                        : " set"));
  }
  va_end(arguments);
  return option == GetAnswers().refused_option ? GetAnswers().refusal : 0;
}

List* curl_slist_append(List* list, const char* line) {
  Note(std::string("curl_slist_append ") + line);
  if (!GetAnswers().slist_append) {
    return nullptr;
  }
  List** end = &list;
  while (*end != nullptr) {
    end = &(*end)->next;
  }
  *end = new List{line, nullptr};
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
  for (auto* line = static_cast<List*>(self.pointers["HTTPHEADER"]); line != nullptr; line = line->next) {
    note.append(" [").append(line->line).append("]");
  }
  if (const auto* body = static_cast<const char*>(self.pointers["POSTFIELDS"])) {
    note.append(" {").append(body, static_cast<std::size_t>(self.numbers["POSTFIELDSIZE"])).append("}");
  }
  Note(note);
  if (void* const function = self.pointers["SSL_CTX_FUNCTION"]) {
    int context = 0;
    reinterpret_cast<int (*)(void*, void*, void*)>(function)(handle, &context, self.pointers["SSL_CTX_DATA"]);
  }
  if (GetAnswers().during_transfer) {
    GetAnswers().during_transfer();
  }
  const auto write =
      reinterpret_cast<std::size_t (*)(char*, std::size_t, std::size_t, void*)>(self.pointers["WRITEFUNCTION"]);
  for (std::string piece : GetAnswers().body) {
    if (write(piece.data(), 1, piece.size(), self.pointers["WRITEDATA"]) != piece.size()) {
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

const char* curl_easy_strerror(int code) {
  static thread_local char text[40];
  std::snprintf(text, sizeof(text), "libcurl's text for %d", code);
  return text;
}

}  // extern "C"
