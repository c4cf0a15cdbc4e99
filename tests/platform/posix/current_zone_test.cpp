#include "zelto/platform/calendar.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace Zelto::Platform {
namespace {

// Local time at 2017-07-01 12:00 UTC in the zone that `TZ` says, as hours * 100 + minutes.
int LocalNoon(const char* zone) {
  if (zone == nullptr) {
    ::unsetenv("TZ");
  } else {
    ::setenv("TZ", zone, 1);
  }
  CalendarFields local;
  UtcToLocal({2017, 7, 0, 1, 12, 0, 0, 0}, local);
  return local.hour * 100 + local.minute;
}

class CurrentZoneTest : public ::testing::Test {
 protected:
  ~CurrentZoneTest() override { ::setenv("TZ", "UTC", 1); }
};

TEST_F(CurrentZoneTest, IsNamedOrSpelledByTheVariable) {
  const struct {
    const char* zone;
    int noon;
  } cases[] = {
      {"Europe/Berlin", 1400}, {":Europe/Berlin", 1400}, {"/usr/share/zoneinfo/Asia/Kolkata", 1730},
      {"EST5EDT", 800},        {"<+03>-3", 1500},        {"America/Argentina/Buenos_Aires", 900},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(LocalNoon(c.zone), c.noon) << c.zone;
  }
}

TEST_F(CurrentZoneTest, IsUtcWhenTheVariableIsHostileOrWrong) {
  const std::string large(100'000, 'A');
  for (const char* zone :
       {"", ":", "No/Such", ":EST5", "../../../etc/passwd", "/etc/passwd", "/dev/zero", "/", "Europe",
        "/usr/share/zoneinfo/../zoneinfo/No", "EST5EDT,M99.1.1,M1.1.1", "%s%n", large.c_str()}) {
    EXPECT_EQ(LocalNoon(zone), 1200) << zone;
  }
  const int system = LocalNoon(nullptr);
  EXPECT_EQ(LocalNoon("Europe/Berlin"), 1400);
  EXPECT_EQ(LocalNoon(nullptr), system);
}

}  // namespace
}  // namespace Zelto::Platform
