/// @file
/// Text of four kinds: what conversions meet.
#pragma once

#include <codecvt>
#include <cstddef>
#include <locale>
#include <random>
#include <string>
#include <vector>

namespace Zelto::Bench {

struct SampleText {
  const char* kind;
  std::string utf8;
  std::wstring utf16;  ///< one unit per `wchar_t`, with surrogate pairs
};

/// Texts of at least `size` bytes each: words in an order that repeats nowhere, as branch predictors learn a short text
/// by heart.
inline std::vector<SampleText> SampleTexts(std::size_t size) {
  const struct {
    const char* kind;
    std::vector<const char*> words;
  } seeds[] = {
      {"ASCII",
       {"The ", "service ", "\"updater\" ", "stopped; ", "its ", "last ", "exit ", "code ", "was ", "0x80070005, "}},
      {"Latin",
       {"Der ", "Zugriff ", "wurde ", "\u00DCberpr\u00FCfung ", "f\u00FCr ", "\u00E9l\u00E8ves ", "et ",
        "gar\u00E7ons, ", "\u00C5ngstr\u00F6m ", "verweigert. "}},
      {"CJK",
       {"\u30D5\u30A1\u30A4\u30EB\u304C", "\u898B\u3064\u304B\u308A\u307E\u305B\u3093\u3002", "\u65E0\u6CD5",
        "\u6253\u5F00\u6307\u5B9A", "\u7684\u6587\u4EF6\uFF0C", "\uB9DD\uC744 ", "\uC2DC\uAC04 ", "64 "}},
      {"emoji",
       {"\U0001F600", "\U0001F680 ", "ok ", "\U0001F44D\U0001F3FD ", "\u2764\uFE0F", "done ", "\U0001F512",
        "\U0001F6E1\uFE0F "}},
  };
  std::mt19937 random(1);
  std::vector<SampleText> texts;
  for (const auto& seed : seeds) {
    SampleText text{seed.kind, {}, {}};
    while (text.utf8.size() < size) {
      text.utf8 += seed.words[random() % seed.words.size()];
    }
    text.utf16 = std::wstring_convert<std::codecvt_utf8_utf16<wchar_t>>().from_bytes(text.utf8);
    texts.push_back(text);
  }
  return texts;
}

}  // namespace Zelto::Bench
