#include "zelto/platform/posix/zone_rule.h"

#include "tests/support/words.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace Zelto::Platform {
namespace {

CalendarFields At(std::uint16_t year, std::uint16_t month, std::uint16_t day, std::uint16_t hour) {
  return {year, month, 0, day, hour, 0, 0, 0};
}

// Minutes east of Greenwich at a time of UTC; 9999 when the rule is refused.
int East(std::string_view rule, const CalendarFields& utc) {
  const std::optional<ZoneRecord> zone = ParseZoneRule(rule);
  CalendarFields local;
  std::uint64_t from = 0;
  std::uint64_t to = 0;
  if (!zone || UtcToLocal(*zone, utc, local) != kSuccess) {
    return 9999;
  }
  FieldsToTicks(utc, from);
  FieldsToTicks(local, to);
  return static_cast<int>((static_cast<std::int64_t>(to) - static_cast<std::int64_t>(from)) / 600'000'000);
}

TEST(ZoneRule, ReadsWhatPosixAndZoneFilesWrite) {
  const struct {
    std::string_view rule;
    CalendarFields utc;
    int east;
  } cases[] = {
      {"UTC0", At(2017, 7, 1, 0), 0},
      {"<+0545>-5:45", At(2017, 7, 1, 0), 345},
      {"IST-5:30", At(2017, 7, 1, 0), 330},
      {"EST5EDT,M3.2.0,M11.1.0", At(2017, 7, 1, 0), -240},
      {"EST5EDT,M3.2.0,M11.1.0", At(2017, 12, 1, 0), -300},
      {"EST+5EDT", At(2017, 7, 1, 0), -240},
      {"CET-1CEST,M3.5.0,M10.5.0/3", At(2017, 3, 26, 0), 60},
      {"CET-1CEST,M3.5.0,M10.5.0/3", At(2017, 3, 26, 1), 120},
      {"AEST-10AEDT-11:30,M10.1.0,M4.1.0/3", At(2017, 1, 1, 0), 690},
      {"IST-1GMT0,M10.5.0,M3.5.0/1", At(2017, 1, 1, 0), 0},  // daylight time behind standard time
      {"IST-1GMT0,M10.5.0,M3.5.0/1", At(2017, 7, 1, 0), 60},
      {"<-02>2<-01>,M3.5.0/-1,M10.5.0/0", At(2024, 3, 31, 0), -120},  // the switch is on the Saturday, 23:00
      {"<-02>2<-01>,M3.5.0/-1,M10.5.0/0", At(2024, 3, 31, 1), -60},
      {"IST-2IDT,M3.4.4/26,M10.5.0", At(2024, 3, 28, 23), 120},  // 26 hours into Thursday: Friday, 2:00
      {"IST-2IDT,M3.4.4/26,M10.5.0", At(2024, 3, 29, 0), 180},
      {"IRST-3:30IRDT,J79/24,J263/24", At(2020, 3, 20, 20), 210},  // leap years do not move day 79
      {"IRST-3:30IRDT,J79/24,J263/24", At(2020, 3, 20, 21), 270},
      {"XXX0YYY,59/0,J365/23", At(2020, 2, 28, 23), 0},  // leap years move day 59
      {"XXX0YYY,59/0,J365/23", At(2020, 2, 29, 0), 60},
      {"EST5EDT,0/0,J365/25", At(2017, 1, 1, 4), -240},  // daylight time all year
      {"EST5EDT,0/0,J365/25", At(2017, 12, 31, 23), -240},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(East(c.rule, c.utc), c.east) << c.rule;
  }
  EXPECT_EQ(ParseZoneRule("LMT0:1:15")->bias, 75);
}

TEST(ZoneRule, RefusesEverythingElse) {
  std::vector<std::string> rules = Testing::Words(
      "U0 UTC UTC0x UTC25 UTC0:60 UTC0:00:60 UTC--1 <UTC0 <>0 U\xC3\xA9T0 EST99999999999999999999 EST5,M3.2.0,M11.1.0 "
      "EST5EDT, EST5EDT,M3.2.0 EST5EDT,M3.2.0, EST5EDT,M13.2.0,M11.1.0 EST5EDT,M3.6.0,M11.1.0 EST5EDT,M3.0.0,M11.1.0 "
      "EST5EDT,M3.2.7,M11.1.0 EST5EDT,M3.2,M11.1.0 EST5EDT,J0,J365 EST5EDT,J1,J366 EST5EDT,0,366 "
      "EST5EDT,M3.2.0/168,M11.1.0 EST5EDT,M3.2.0/99999999999,M11.1.0 EST5EDT,M3.2.0,M11.1.0,");
  rules.insert(rules.end(), {"", "UTC 0", "EST5EDT,M3.2.0,M11.1.0 "});
  for (const std::string& rule : rules) {
    EXPECT_FALSE(ParseZoneRule(rule).has_value()) << rule;
  }
}

std::string Read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A zone file of the first version: one change at `time`, from type 0 (`east`) to type 1 (`later_east`).
std::string OldFile(std::int32_t time, std::int32_t east, std::int32_t later_east) {
  const auto number = [](std::int32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
      bytes += static_cast<char>(static_cast<std::uint32_t>(value) >> shift);
    }
    return bytes;
  };
  const std::string counts = number(0) + number(0) + number(0) + number(1) + number(2) + number(4);
  return "TZif" + std::string(16, '\0') + counts + number(time) + std::string(1, '\1') + number(east) +
         std::string(2, '\0') + number(later_east) + std::string(2, '\0') + std::string("ABC\0", 4);
}

TEST(ZoneFile, GivesTheRuleAtItsEndOrTheStandingOffset) {
  const std::optional<ZoneRecord> berlin = ParseZoneFile(Read("/usr/share/zoneinfo/Europe/Berlin"), 0);
  ASSERT_TRUE(berlin.has_value());
  EXPECT_EQ(berlin->bias, -3600);
  EXPECT_EQ(berlin->to_daylight.month, 3);
  const std::string old = OldFile(1000, 3600, -7200);
  EXPECT_EQ(ParseZoneFile(old, 999)->bias, -3600);
  EXPECT_EQ(ParseZoneFile(old, 1000)->bias, 7200);
  EXPECT_FALSE(ParseZoneFile(OldFile(1000, 100'000, 0), 999).has_value());
}

TEST(ZoneFile, SurvivesDamage) {
  const std::string whole = Read("/usr/share/zoneinfo/America/New_York");
  const std::string old = OldFile(1000, 3600, -7200);
  ASSERT_TRUE(ParseZoneFile(whole, 0).has_value());
  for (const std::string& file : {whole, old}) {
    for (std::size_t size = 0; size < file.size(); ++size) {
      EXPECT_FALSE(ParseZoneFile(std::string(file, 0, size), 0).has_value()) << size;
    }
  }
  std::mt19937 random(7);
  for (int i = 0; i < 20'000; ++i) {
    std::string damaged = i % 2 == 0 ? old : whole;
    for (int byte = 0; byte < 3; ++byte) {
      damaged[random() % (i % 3 == 0 ? 44 : damaged.size())] = static_cast<char>(random());
    }
    // Whatever is accepted is a zone that the calendar can work with.
    const std::optional<ZoneRecord> zone = ParseZoneFile(damaged, 0);
    CalendarFields local;
    ASSERT_TRUE(!zone || UtcToLocal(*zone, At(2017, 1, 1, 0), local) == kSuccess);
  }
}

}  // namespace
}  // namespace Zelto::Platform
