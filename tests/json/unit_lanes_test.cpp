#include "zelto/json/unit_lanes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>

namespace Zelto::Json {
namespace {

// Both forms, whichever of them this processor's build uses.
template <typename Lanes>
class UnitLanesTest : public ::testing::Test {};
using Forms = ::testing::Types<ArrayLanes, UnitLanes>;
TYPED_TEST_SUITE(UnitLanesTest, Forms);

constexpr std::uint32_t kEdges[] = {0,       '"',     '0',      '9',      ':',        '\\',       0x13,
                                    0x14,    0x122,   0x2200,   0x7FFF,   0x8000,     0x8022,     0xFFFF,
                                    0x10000, 0x10022, 0x10FFFF, 0x110000, 0x7FFFFFFF, 0x80000022, 0xFFFFFFFF};

// The flags of the first `Count` units for which a test holds.
template <std::size_t Count, typename Unit, typename Test>
BlockFlags FlagsOf(const std::array<Unit, 8>& units, const Test& test) {
  BlockFlags flags = 0;
  for (std::size_t i = 0; i < Count; ++i) {
    flags |= test(static_cast<std::uint32_t>(units[i])) ? 3U << 2 * i : 0U;
  }
  return flags;
}

template <typename Lanes, std::size_t Count, typename Unit>
void Check(const std::array<Unit, 8>& units) {
  constexpr BlockFlags kMask = (BlockFlags{1} << 2 * Count) - 1;
  const auto lanes = Lanes::template Load<Count>(units.data());
  for (const std::uint32_t edge : kEdges) {
    const auto unit = static_cast<std::uint16_t>(edge);
    EXPECT_EQ(lanes.EqualTo(unit).Flags() & kMask,
              FlagsOf<Count>(units, [unit](std::uint32_t value) { return (value & 0xFFFFU) == unit; }));
    if (unit != 0) {
      EXPECT_EQ(lanes.Below(unit).Flags() & kMask,
                FlagsOf<Count>(units, [unit](std::uint32_t value) { return (value & 0xFFFFU) < unit; }));
    }
  }
  EXPECT_EQ(((lanes - '0').Below(10) | lanes.EqualTo('"')).Flags() & kMask,
            FlagsOf<Count>(units, [](std::uint32_t value) {
              const std::uint32_t low = value & 0xFFFFU;
              return (low >= '0' && low <= '9') || low == '"';
            }));
  if constexpr (sizeof(Unit) > sizeof(char16_t)) {
    EXPECT_EQ(Lanes::template LoadHigh<Count>(units.data()).EqualTo(0).Flags() & kMask,
              FlagsOf<Count>(units, [](std::uint32_t value) { return value <= 0xFFFFU; }));
  }
  std::array<char16_t, 9> narrow{};
  std::array<char32_t, 9> wide{};
  lanes.template Store<Count>(narrow.data());
  lanes.template Store<Count>(wide.data());
  for (std::size_t i = 0; i < narrow.size(); ++i) {
    const auto expected = i < Count ? static_cast<std::uint32_t>(units[i]) & 0xFFFFU : 0U;
    EXPECT_EQ(std::uint32_t{narrow[i]}, expected) << i;
    EXPECT_EQ(std::uint32_t{wide[i]}, expected) << i;
  }
}

TYPED_TEST(UnitLanesTest, DoWhatALoopOverUnitsDoes) {
  std::mt19937 random(1);
  for (int i = 0; i < 500; ++i) {
    std::array<char32_t, 8> wide{};
    std::array<char16_t, 8> narrow{};
    std::generate(wide.begin(), wide.end(), [&random] {
      return static_cast<char32_t>(random() % 8 == 0 ? random() : kEdges[random() % std::size(kEdges)]);
    });
    std::transform(wide.begin(), wide.end(), narrow.begin(), [](char32_t unit) { return static_cast<char16_t>(unit); });
    Check<TypeParam, 4>(wide);
    Check<TypeParam, 8>(wide);
    Check<TypeParam, 4>(narrow);
    Check<TypeParam, 8>(narrow);
  }
}

}  // namespace
}  // namespace Zelto::Json
