#include "zelto/platform/locale_text.h"

#include <array>
#include <clocale>
#include <ctime>
#include <cwchar>
#include <fstream>
#include <string_view>

namespace Zelto::Platform {
namespace {

constexpr std::size_t kMaximumTextSize = 256;

class Locale {
 public:
  explicit Locale(const char* name) noexcept : value_(::newlocale(LC_TIME_MASK | LC_CTYPE_MASK, name, nullptr)) {
    if (value_ == nullptr) {
      value_ = ::newlocale(LC_ALL_MASK, "C", nullptr);
    }
  }
  ~Locale() {
    if (value_ != nullptr) {
      ::freelocale(value_);
    }
  }
  Locale(const Locale&) = delete;
  Locale& operator=(const Locale&) = delete;
  locale_t Get() const noexcept { return value_; }

 private:
  locale_t value_;
};

// The value of NAME=value or NAME="value"; nothing when the line says something else.
std::string_view Value(std::string_view line, std::string_view name) noexcept {
  if (!line.starts_with(name) || line.size() == name.size() || line[name.size()] != '=') {
    return {};
  }
  line.remove_prefix(name.size() + 1);
  if (line.size() >= 2 && line.front() == '"' && line.back() == '"') {
    line = line.substr(1, line.size() - 2);
  }
  return line;
}

std::string SystemLocaleName() {
  for (const char* path : {"/etc/locale.conf", "/etc/default/locale"}) {
    std::ifstream file(path);
    std::string all;
    std::string times;
    std::string line;
    while (std::getline(file, line)) {
      if (const std::string_view language = Value(line, "LANG"); !language.empty()) {
        all = language;
      }
      if (const std::string_view of_times = Value(line, "LC_TIME"); !of_times.empty()) {
        times = of_times;
      }
    }
    if (!times.empty() || !all.empty()) {
      return times.empty() ? all : times;
    }
  }
  return "C";
}

// One UTF-16 unit per `wchar_t`.
std::wstring ToUnits(std::wstring_view text) {
  std::wstring units;
  for (const wchar_t character : text) {
    if (character <= 0xFFFF) {
      units += character;
    } else {
      const wchar_t above = character - 0x10000;
      units += static_cast<wchar_t>(0xD800 + (above >> 10));
      units += static_cast<wchar_t>(0xDC00 + (above & 0x3FF));
    }
  }
  return units;
}

ErrorCode Format(const wchar_t* picture, LocaleId id, const CalendarFields& fields, std::wstring& text) {
  if (id != kUserDefaultLocale && id != kSystemDefaultLocale) {
    return kInvalidParameter;
  }
  const Locale locale(id == kUserDefaultLocale ? "" : SystemLocaleName().c_str());
  if (locale.Get() == nullptr) {
    return kNotEnoughMemory;
  }
  std::tm time{};
  time.tm_year = fields.year - 1900;
  time.tm_mon = fields.month - 1;
  time.tm_mday = fields.day;
  time.tm_wday = fields.day_of_week;
  time.tm_hour = fields.hour;
  time.tm_min = fields.minute;
  time.tm_sec = fields.second;
  time.tm_isdst = -1;
  std::array<wchar_t, kMaximumTextSize> buffer;
  const std::size_t size = ::wcsftime_l(buffer.data(), buffer.size(), picture, &time, locale.Get());
  text = ToUnits({buffer.data(), size});
  return kSuccess;
}

}  // namespace

ErrorCode FormatLocaleDate(LocaleId locale, const CalendarFields& fields, std::wstring& text) {
  return Format(L"%x", locale, fields, text);
}

ErrorCode FormatLocaleTime(LocaleId locale, const CalendarFields& fields, std::wstring& text) {
  return Format(L"%X", locale, fields, text);
}

}  // namespace Zelto::Platform
