// The hexadecimal form of times beside a regular expression of what `scanf` reads.
#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "fuzz/models/utf.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/time/utc_time.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Zelto::Fuzz {
namespace {

using Utilities::UtcTime;
using Form = UtcTime::StringValue;

// One "%8x": blanks, then at most eight characters of a sign, "0x" and digits, of which there must be one.
std::optional<std::uint32_t> TakeNumber(std::string& text) {
  static const std::regex number("([+-]?)(0[xX])?([0-9a-fA-F]*)");
  text.erase(0, std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  std::string field = text.substr(0, 8);
  std::smatch parts;
  std::regex_search(field, parts, number, std::regex_constants::match_continuous);
  if (parts.str(3).empty()) {
    return std::nullopt;
  }
  text.erase(0, static_cast<std::size_t>(parts.length()));
  const auto value = static_cast<std::uint32_t>(std::stoul(parts.str(3), nullptr, 16));
  return parts.str(1) == "-" ? 0 - value : value;
}

std::optional<std::uint64_t> Scan(std::wstring_view text) {
  std::string narrow = Narrow(text);
  const std::optional<std::uint32_t> high = TakeNumber(narrow);
  const std::optional<std::uint32_t> low = high ? TakeNumber(narrow) : std::nullopt;
  return low ? std::optional(std::uint64_t{*high} << 32 | *low) : std::nullopt;
}

std::string Refusal(std::wstring_view text) {
  if (text.empty()) {
    return "Can't convert empty hex value to utc object";
  }
  const std::optional<CodePoints> characters = DecodeUtf16(text);
  return characters ? "Can't convert value: " + EncodeUtf8(*characters) + " to utc object" : "bad conversion";
}

void Run(Bytes bytes) {
  const std::vector<wchar_t> units = LenientText(bytes);
  const std::wstring_view text = View(units);
  const std::optional<std::uint64_t> expected = Scan(text);
  std::string error;
  UtcTime time;
  try {
    time = UtcTime(text, Form::Hex, false);
  } catch (const std::invalid_argument& refused) {
    error = refused.what();
  } catch (const std::range_error& refused) {
    error = refused.what();
  }
  Require(error == (expected ? "" : Refusal(text).c_str()), "two numbers make a time");
  if (!expected) {
    return;
  }
  Require(time.GetTime() == *expected, "the high half stands first");
  std::array<char, 17> printed{};
  std::snprintf(printed.data(), printed.size(), "%08x%08x", static_cast<unsigned>(*expected >> 32),
                static_cast<unsigned>(*expected & 0xFFFFFFFF));
  Require(time.ToString(Form::Hex, false) == std::wstring(printed.begin(), printed.end() - 1), "the time in 16 digits");
  try {
    const std::wstring date = time.ToString(Form::ISO8601, true);
    Require(UtcTime::IsISO8601DateTime(date) == (date.size() == 19), "a year of four digits is written in form");
    UtcTime(text, Form::Hex, true).GetUnixTimestamp(true);
    time.GetSecondsUntilMidnight(true);
  } catch (const Utilities::Win32Exception& refused) {
    Require(refused.GetErrorCode() == 87, "what the calendar refuses");
  }
}

const Target target("hex_time", Run);

}  // namespace
}  // namespace Zelto::Fuzz
