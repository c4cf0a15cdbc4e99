// ISO 8601 texts beside the regular expressions that describe them, and the time read from them beside the calendar of
// the standard library. Texts are short: the regular expressions follow every way to match.
#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "fuzz/models/utf.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/time/utc_time.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Zelto::Fuzz {
namespace {

using Utilities::UtcTime;

constexpr std::size_t kLongestText = 96;

bool Describes(std::wstring_view text) {
  static const std::wregex time(
      LR"(([0-9]{2}):([0-9]{2}):([0-9]{2})(?:.[0-9]{3})*(?:(?:[+-]{1}[0-9]{2}.[0-9]{2})|(?:Z))*)");
  static const std::wregex date_and_time(
      LR"(([0-9]{4})-{0,1}([0-9]{2})-{0,1}([0-9]{2})(?:[ ,T]{1}([0-9]{2}):([0-9]{2}):([0-9]{2})(?:.[0-9]{3})*)*)"
      LR"((?:(?:[+-]{1}[0-9]{2}.[0-9]{2})|(?:Z))*)");
  return text.size() >= 4 && std::regex_match(text.begin(), text.end(), text[2] == L':' ? time : date_and_time);
}

// The ticks of six numbers; nothing when they are no time of the calendar.
std::optional<std::uint64_t> Ticks(const std::array<long, 6>& fields) {
  using namespace std::chrono;
  const auto [year_, month_, day_, hour, minute, second] = fields;
  if (year_ < 1601 || year_ > 30827 || month_ < 1 || day_ < 1 || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
      second < 0 || second > 59) {
    return std::nullopt;
  }
  const year_month_day date{year{static_cast<int>(year_)}, month{static_cast<unsigned>(month_)},
                            day{static_cast<unsigned>(day_)}};
  if (!date.ok()) {
    return std::nullopt;
  }
  const seconds since = sys_days{date} - sys_days{year{1601} / 1 / 1} + hours{hour} + minutes{minute} + seconds{second};
  return static_cast<std::uint64_t>(since.count()) * 10'000'000;
}

void CheckReading(const std::wstring& text) {
  constexpr std::array<std::size_t, 6> kPositions{0, 5, 8, 11, 14, 17};
  std::array<long, 6> fields{};
  bool whole = true;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    whole = whole && kPositions[i] <= text.size();
    fields[i] = whole ? std::wcstol(text.substr(kPositions[i], i == 0 ? 4 : 2).c_str(), nullptr, 10) : 0;
  }
  const std::optional<std::uint64_t> expected = whole ? Ticks(fields) : std::nullopt;
  try {
    const UtcTime time(text, UtcTime::StringValue::ISO8601, false);
    Require(expected == time.GetTime(), "the fields are read at their positions");
    std::array<char, 32> printed{};
    std::snprintf(printed.data(), printed.size(), "%04ld-%02ld-%02ldT%02ld:%02ld:%02ld", fields[0], fields[1],
                  fields[2], fields[3], fields[4], fields[5]);
    Require(time.ToString(UtcTime::StringValue::ISO8601, false) ==
                std::wstring(printed.begin(), printed.begin() + 19 + (fields[0] > 9999)),
            "the time is written as it was read");
  } catch (const std::out_of_range&) {
    Require(!whole, "a text with all positions is read");
  } catch (const Utilities::Win32Exception& error) {
    Require(whole && !expected && error.GetErrorCode() == 87, "a time of the calendar is accepted");
  }
}

void Run(Bytes bytes) {
  const std::vector<wchar_t> units = LenientText(bytes);
  const std::wstring text(View(units).substr(0, kLongestText));
  const bool matches = UtcTime::IsISO8601DateTime(View(units));
  if (units.size() > kLongestText || text.find_first_of(L"\u2028\u2029") != std::wstring::npos) {
    return;  // the standard library knows no line ends above U+007F
  }
  const std::optional<std::wstring> pairs = InUnits(text);
  Require(matches == (pairs && Describes(*pairs)), "the text is of the described form");
  if (matches) {
    CheckReading(text);
    return;
  }
  try {
    const UtcTime time(text, UtcTime::StringValue::DateTime, false);
    Require(false, "a text of another form is refused");
  } catch (const std::invalid_argument& error) {
    Require(std::string(error.what()) == "Is not a valid ISO8601 string", "the error's text");
  }
}

const Target target("iso8601", Run);

}  // namespace
}  // namespace Zelto::Fuzz
