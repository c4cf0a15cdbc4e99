#include "zelto/platform/posix/zone_rule.h"

namespace Zelto::Platform {
namespace {

constexpr std::int32_t kSecondsPerHour = 3'600;
constexpr std::int32_t kMaximumOffsetHours = 24;
constexpr std::int32_t kMaximumSwitchHours = 167;
constexpr std::int32_t kDefaultSwitchSeconds = 2 * kSecondsPerHour;
constexpr std::size_t kShortestName = 3;
constexpr std::string_view kDefaultSwitches = ",M3.2.0,M11.1.0";

bool IsDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}

bool IsLetter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Takes a rule's text apart from the left. Once something is missing it has failed and stays so.
class RuleReader {
 public:
  explicit RuleReader(std::string_view text) noexcept : rest_(text) {}

  bool IsGood() const noexcept { return good_; }
  bool IsAtEnd() const noexcept { return rest_.empty(); }
  char Peek() const noexcept { return rest_.empty() ? '\0' : rest_.front(); }

  bool Take(char c) noexcept {
    const bool taken = !rest_.empty() && rest_.front() == c;
    if (taken) {
      rest_.remove_prefix(1);
    }
    return taken;
  }

  void Expect(char c) noexcept { good_ = Take(c) && good_; }

  std::int32_t Number(std::int32_t low, std::int32_t high) noexcept {
    std::int32_t value = 0;
    std::size_t digits = 0;
    while (digits < rest_.size() && IsDigit(rest_[digits]) && value <= high) {
      value = value * 10 + (rest_[digits] - '0');
      ++digits;
    }
    rest_.remove_prefix(digits);
    good_ = good_ && digits > 0 && value >= low && value <= high;
    return value;
  }

  void Name() noexcept {
    const bool quoted = Take('<');
    std::size_t length = 0;
    while (length < rest_.size() &&
           (IsLetter(rest_[length]) ||
            (quoted && (IsDigit(rest_[length]) || rest_[length] == '+' || rest_[length] == '-')))) {
      ++length;
    }
    rest_.remove_prefix(length);
    good_ = good_ && length >= kShortestName;
    if (quoted) {
      Expect('>');
    }
  }

  // [+-]hours[:minutes[:seconds]], in seconds.
  std::int32_t Time(std::int32_t maximum_hours) noexcept {
    const bool negative = Take('-');
    if (!negative) {
      Take('+');
    }
    std::int32_t seconds = Number(0, maximum_hours) * kSecondsPerHour;
    if (Take(':')) {
      seconds += Number(0, 59) * 60;
      if (Take(':')) {
        seconds += Number(0, 59);
      }
    }
    return negative ? -seconds : seconds;
  }

  ZoneSwitch Switch() noexcept {
    ZoneSwitch change;
    if (Take('M')) {
      change.form = ZoneSwitch::Form::Weekday;
      change.month = static_cast<std::uint8_t>(Number(1, 12));
      Expect('.');
      change.week = static_cast<std::uint8_t>(Number(1, 5));
      Expect('.');
      change.day = static_cast<std::uint16_t>(Number(0, 6));
    } else if (Take('J')) {
      change.form = ZoneSwitch::Form::YearDay;
      change.day = static_cast<std::uint16_t>(Number(1, 365));
    } else {
      change.form = ZoneSwitch::Form::LeapYearDay;
      change.day = static_cast<std::uint16_t>(Number(0, 365));
    }
    change.seconds = Take('/') ? Time(kMaximumSwitchHours) : kDefaultSwitchSeconds;
    return change;
  }

  void Switches(ZoneRecord& zone) noexcept {
    Expect(',');
    zone.to_daylight = Switch();
    Expect(',');
    zone.to_standard = Switch();
  }

 private:
  std::string_view rest_;
  bool good_ = true;
};

// Takes a zone file apart; numbers are big-endian.
class FileReader {
 public:
  explicit FileReader(std::string_view bytes) noexcept : rest_(bytes) {}

  bool IsGood() const noexcept { return good_; }
  std::string_view Rest() const noexcept { return rest_; }

  std::string_view Block(std::uint64_t size) noexcept {
    good_ = good_ && size <= rest_.size();
    if (!good_) {
      return {};
    }
    const std::string_view block = rest_.substr(0, static_cast<std::size_t>(size));
    rest_.remove_prefix(block.size());
    return block;
  }

  std::uint32_t Number() noexcept { return good_ ? static_cast<std::uint32_t>(ReadNumber(Block(4))) : 0; }

  static std::uint64_t ReadNumber(std::string_view bytes) noexcept {
    std::uint64_t value = 0;
    for (const char byte : bytes) {
      value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
  }

 private:
  std::string_view rest_;
  bool good_ = true;
};

// One of a file's two bodies: the first with times of 4 bytes, the second, where there is one, with 8.
struct FileBody {
  std::string_view times;
  std::string_view time_types;
  std::string_view types;
};

constexpr std::size_t kTypeSize = 6;  // offset, daylight flag, name

char ReadHeaderAndBody(FileReader& reader, std::size_t time_size, FileBody& body) noexcept {
  const std::string_view mark = reader.Block(4);
  const std::string_view version = reader.Block(16);
  const std::uint64_t utc_flags = reader.Number();
  const std::uint64_t standard_flags = reader.Number();
  const std::uint64_t leap_seconds = reader.Number();
  const std::uint64_t times = reader.Number();
  const std::uint64_t types = reader.Number();
  const std::uint64_t name_bytes = reader.Number();
  body.times = reader.Block(times * time_size);
  body.time_types = reader.Block(times);
  body.types = reader.Block(types * kTypeSize);
  reader.Block(name_bytes + leap_seconds * (time_size + 4) + standard_flags + utc_flags);
  return reader.IsGood() && mark == "TZif" ? version.front() : '\xFF';
}

std::optional<ZoneRecord> StandingOffset(const FileBody& body, std::size_t time_size, std::int64_t now) noexcept {
  std::size_t type = 0;
  for (std::size_t i = 0; i < body.time_types.size(); ++i) {
    const std::uint64_t raw = FileReader::ReadNumber(body.times.substr(i * time_size, time_size));
    const std::int64_t time = time_size == 4 ? static_cast<std::int32_t>(raw) : static_cast<std::int64_t>(raw);
    if (time <= now) {
      type = static_cast<unsigned char>(body.time_types[i]);
    }
  }
  if ((type + 1) * kTypeSize > body.types.size()) {
    return std::nullopt;
  }
  const auto east = static_cast<std::int32_t>(FileReader::ReadNumber(body.types.substr(type * kTypeSize, 4)));
  if (east < -kMaximumOffsetHours * kSecondsPerHour || east > kMaximumOffsetHours * kSecondsPerHour) {
    return std::nullopt;
  }
  ZoneRecord zone;
  zone.bias = -east;
  return zone;
}

}  // namespace

std::optional<ZoneRecord> ParseZoneRule(std::string_view text) noexcept {
  RuleReader reader(text);
  ZoneRecord zone;
  reader.Name();
  zone.bias = reader.Time(kMaximumOffsetHours);
  if (reader.IsGood() && !reader.IsAtEnd()) {
    reader.Name();
    const bool has_offset = !reader.IsAtEnd() && reader.Peek() != ',';
    const std::int32_t daylight = has_offset ? reader.Time(kMaximumOffsetHours) : zone.bias - kSecondsPerHour;
    zone.daylight_bias = daylight - zone.bias;
    if (reader.IsAtEnd()) {
      RuleReader(kDefaultSwitches).Switches(zone);
    } else {
      reader.Switches(zone);
    }
  }
  return reader.IsGood() && reader.IsAtEnd() ? std::optional(zone) : std::nullopt;
}

std::optional<ZoneRecord> ParseZoneFile(std::string_view bytes, std::int64_t now) noexcept {
  FileReader reader(bytes);
  FileBody body;
  std::size_t time_size = 4;
  const char version = ReadHeaderAndBody(reader, time_size, body);
  if (version >= '2') {
    time_size = 8;
    if (ReadHeaderAndBody(reader, time_size, body) != version) {
      return std::nullopt;
    }
    const std::string_view rule = reader.Rest();
    if (rule.size() < 2 || rule.front() != '\n' || rule.back() != '\n') {
      return std::nullopt;
    }
    if (rule.size() > 2) {
      return ParseZoneRule(rule.substr(1, rule.size() - 2));
    }
  } else if (version != '\0') {
    return std::nullopt;
  }
  return StandingOffset(body, time_size, now);
}

}  // namespace Zelto::Platform
