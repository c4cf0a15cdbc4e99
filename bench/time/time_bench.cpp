// Reading and writing ISO 8601 text beside the `date` library and Abseil, which have narrow text.
#include "bench/support/interleaved.h"
#include "zelto/time/utc_time.h"

#include <absl/time/time.h>
#include <date/date.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <string>

using Zelto::Bench::CompareComputing;
using Zelto::Bench::Keep;
using Zelto::Bench::Print;
using Zelto::Utilities::UtcTime;

namespace {

using Seconds = date::sys_seconds;

constexpr std::size_t kTimes = 64;
constexpr auto kForm = UtcTime::StringValue::ISO8601;
constexpr char kDateFormat[] = "%FT%T";
constexpr char kAbslFormat[] = "%Y-%m-%dT%H:%M:%S";

// The same instants for all, spread over a century, taken in turns.
template <typename T>
class Ring {
 public:
  T& At(std::size_t i) noexcept { return values_[i]; }
  const T& Next() noexcept { return values_[at_++ % kTimes]; }

 private:
  std::array<T, kTimes> values_;
  std::size_t at_ = 0;
};

Ring<UtcTime> our_times;
Ring<Seconds> date_times;
Ring<absl::Time> absl_times;
Ring<std::wstring> wide_texts;
Ring<std::string> narrow_texts;

Seconds ParseWithDate(const std::string& text, std::istringstream& stream) {
  Seconds time{};
  stream.clear();
  stream.str(text);
  stream >> date::parse(kDateFormat, time);
  return time;
}

absl::Time ParseWithAbsl(const std::string& text) {
  absl::Time time;
  absl::ParseTime(kAbslFormat, text, &time, nullptr);
  return time;
}

// A peer that does not do the same is no peer.
bool Agree(std::istringstream& stream) {
  for (std::size_t i = 0; i < kTimes; ++i) {
    const std::wstring& wide = wide_texts.At(i);
    const std::string& narrow = narrow_texts.At(i);
    if (UtcTime(wide, kForm, false) != our_times.At(i) || ParseWithDate(narrow, stream) != date_times.At(i) ||
        ParseWithAbsl(narrow) != absl_times.At(i) || date::format(kDateFormat, date_times.At(i)) != narrow ||
        absl::FormatTime(kAbslFormat, absl_times.At(i), absl::UTCTimeZone()) != narrow) {
      return false;
    }
  }
  return true;
}

}  // namespace

int main() {
  for (std::size_t i = 0; i < kTimes; ++i) {
    const auto seconds = static_cast<std::int64_t>(i * 49'999'993 + 1);
    our_times.At(i) = UtcTime(seconds, false);
    date_times.At(i) = Seconds(std::chrono::seconds(seconds));
    absl_times.At(i) = absl::FromUnixSeconds(seconds);
    wide_texts.At(i) = our_times.At(i).ToString(kForm, false);
    narrow_texts.At(i) = std::string(wide_texts.At(i).begin(), wide_texts.At(i).end());
  }
  std::istringstream stream;
  stream.imbue(std::locale::classic());
  if (!Agree(stream)) {
    return EXIT_FAILURE;
  }

  const auto parse = [] { Keep(UtcTime(wide_texts.Next(), kForm, false)); };
  const auto print = [] { Keep(our_times.Next().ToString(kForm, false)); };
  Print("parse ISO 8601", "date", CompareComputing(parse, [&] { Keep(ParseWithDate(narrow_texts.Next(), stream)); }));
  Print("parse ISO 8601", "Abseil", CompareComputing(parse, [] { Keep(ParseWithAbsl(narrow_texts.Next())); }));
  Print("print ISO 8601", "date", CompareComputing(print, [] { Keep(date::format(kDateFormat, date_times.Next())); }));
  Print("print ISO 8601", "Abseil",
        CompareComputing(print, [] { Keep(absl::FormatTime(kAbslFormat, absl_times.Next(), absl::UTCTimeZone())); }));

  const auto parse_local = [] { Keep(UtcTime(wide_texts.Next(), kForm, true)); };
  const auto print_local = [] { Keep(our_times.Next().ToString(kForm, true)); };
  absl::TimeZone zone = absl::LocalTimeZone();
  Print("parse ISO 8601, local", "Abseil", CompareComputing(parse_local, [&] {
          absl::Time time;
          absl::ParseTime(kAbslFormat, narrow_texts.Next(), zone, &time, nullptr);
          Keep(time);
        }));
  Print("print ISO 8601, local", "Abseil",
        CompareComputing(print_local, [&] { Keep(absl::FormatTime(kAbslFormat, absl_times.Next(), zone)); }));
  return EXIT_SUCCESS;
}
