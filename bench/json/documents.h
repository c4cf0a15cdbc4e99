/// @file
/// Documents that look like what services, agents and their servers exchange.
#pragma once

#include "zelto/text/string_utilities.h"

#include <cstddef>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Bench {

struct Document {
  const char* name;
  std::string utf8;
  std::wstring utf16;
};

inline std::string Join(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) {
    text += piece;
  }
  return text;
}

/// Texts of random content that is the same in every run.
class DocumentText {
 public:
  unsigned Number(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
  bool Chance(unsigned percent) { return Number(100) < percent; }

  std::string Hex(unsigned digits) {
    std::string text;
    for (unsigned i = 0; i < digits; ++i) {
      text += "0123456789abcdef"[Number(16)];
    }
    return text;
  }

  std::string Id() { return Join({Hex(8), "-", Hex(4), "-", Hex(4), "-", Hex(4), "-", Hex(12)}); }

  std::string Time() {
    const auto two = [this](unsigned limit) { return Join({std::to_string(10 + Number(limit))}); };
    return Join({"2024-", two(3), "-", two(18), "T", two(14), ":", two(50), ":", two(50)});
  }

  std::string Word() {
    static const char* const kWords[] = {"update",
                                         "service",
                                         "policy",
                                         "scan",
                                         "quarantine",
                                         "user",
                                         "Zugriff",
                                         "\u00FCber",
                                         "caf\u00E9",
                                         "profile",
                                         "\u30D5\u30A1\u30A4\u30EB",
                                         "\u0444\u0430\u0439\u043B",
                                         "network",
                                         "engine",
                                         "result",
                                         "detected"};
    return kWords[Number(sizeof(kWords) / sizeof(*kWords))];
  }

  std::string Words(unsigned count) {
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
      text += Join({i == 0 ? "" : " ", Word()});
    }
    return text;
  }

  std::string Path() { return Join({"C:\\\\Program Files\\\\", Word(), "\\\\", Word(), Hex(3), ".exe"}); }
  std::string Url() { return Join({"https:\\/\\/example.com\\/", Word(), "\\/", Hex(12)}); }
  std::string Sentence() {
    return Join({Words(4 + Number(8)), Chance(30) ? Join({"\\nsaid \\\"", Word(), "\\\""}) : std::string(),
                 Chance(20) ? "\\u00e9" : "."});
  }
  std::string Bool() { return Chance(50) ? "true" : "false"; }
  std::string Count(unsigned limit) { return std::to_string(Number(limit)); }

 private:
  std::mt19937 random_{20240229};
};

/// What agents report: events with nested objects, paths, times and sentences.
inline std::string Events(unsigned count) {
  DocumentText t;
  std::string text = Join({"{\"version\":3,\"host\":\"", t.Word(), "\",\"events\":["});
  for (unsigned i = 0; i < count; ++i) {
    text += Join({i == 0 ? "" : ",",
                  "{\"id\":\"",
                  t.Id(),
                  "\",\"type\":\"",
                  t.Word(),
                  "\",\"time\":\"",
                  t.Time(),
                  "\",\"severity\":",
                  t.Count(6),
                  ",\"process\":{\"path\":\"",
                  t.Path(),
                  "\",\"pid\":",
                  t.Count(30000),
                  ",\"elevated\":",
                  t.Bool(),
                  ",\"args\":[\"--",
                  t.Word(),
                  "\",\"",
                  t.Hex(6),
                  "\"]},\"user\":{\"name\":\"",
                  t.Words(2),
                  "\",\"sid\":\"S-1-5-21-",
                  t.Count(1000000000),
                  "\",\"domain\":null},\"blocked\":",
                  t.Bool(),
                  ",\"message\":\"",
                  t.Sentence(),
                  "\",\"url\":\"",
                  t.Url(),
                  "\"}"});
  }
  return Join({text, "]}"});
}

/// What a server hands out: devices by name, with settings that nest a few levels deep.
inline std::string Inventory(unsigned count) {
  DocumentText t;
  std::string text = Join({"{\"generated\":\"", t.Time(), "\",\"devices\":{"});
  for (unsigned i = 0; i < count; ++i) {
    text += Join({i == 0 ? "" : ",", "\"",
                  t.Word(),          "-",
                  std::to_string(i), "\":{\"os\":{\"name\":\"Windows 11\",\"build\":",
                  t.Count(30000),    ",\"lang\":\"",
                  t.Word(),          "\"},\"ip\":\"10.",
                  t.Count(255),      ".",
                  t.Count(255),      ".1\",\"online\":",
                  t.Bool(),          ",\"policy\":{\"scan\":{\"on\":",
                  t.Bool(),          ",\"hour\":",
                  t.Count(24),       ",\"paths\":[\"",
                  t.Path(),          "\",\"",
                  t.Path(),          "\"]},\"net\":{\"on\":",
                  t.Bool(),          ",\"ports\":[",
                  t.Count(60000),    ",",
                  t.Count(60000),    ",",
                  t.Count(60000),    "]},\"web\":{\"allow\":[\"",
                  t.Url(),           "\"]}},\"seen\":\"",
                  t.Time(),          "\",\"owner\":\"",
                  t.Words(2),        "\"}"});
  }
  return Join({text, "}}"});
}

/// Rows of a table: small flat objects of numbers and flags.
inline std::string Records(unsigned count) {
  DocumentText t;
  std::string text = "{\"records\":[";
  for (unsigned i = 0; i < count; ++i) {
    text += Join({i == 0 ? "" : ",", "{\"id\":", std::to_string(i), ",\"size\":", t.Count(100000000), ",\"hits\":",
                  t.Count(1000), ",\"ok\":", t.Bool(), ",\"delta\":-", t.Count(5000), ",\"tag\":\"", t.Word(), "\"}"});
  }
  return Join({text, "]}"});
}

inline std::vector<Document> Documents() {
  std::vector<Document> documents = {{"events", Events(900), {}},
                                     {"inventory", Inventory(700), {}},
                                     {"records", Records(5000), {}},
                                     {"message", Events(1), {}}};
  for (Document& document : documents) {
    document.utf16 = Utilities::StringUtilities::Utf8ToUtf16(document.utf8);
  }
  return documents;
}

}  // namespace Zelto::Bench
