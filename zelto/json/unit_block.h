/// @file
/// Text in steps of several units. Not installed.
#pragma once

#include "zelto/json/escapes.h"
#include "zelto/json/unit_lanes.h"

#include <bit>
#include <cstddef>

namespace Zelto::Json {

/// The number of units before the first one whose flag is set.
inline std::size_t FirstFlag(BlockFlags flags) noexcept {
  return static_cast<std::size_t>(std::countr_zero(flags)) / 2;
}

/// `Count` units, 4 or 8. Of wider characters only the low 16 bits are kept.
template <std::size_t Count>
class UnitBlock {
 public:
  template <typename Unit>
  explicit UnitBlock(const Unit* from) noexcept : lanes_(UnitLanes::Load<Count>(from)) {}

  template <typename Unit>
  void Store(Unit* to) const noexcept {
    lanes_.template Store<Count>(to);
  }

  /// The masked and the non-printing units.
  BlockFlags ToEscape() const noexcept {
    return kMask & (lanes_.EqualTo('"') | lanes_.EqualTo('\\') | lanes_.EqualTo('/') | lanes_.Below(kFirstPrintingCode))
                       .Flags();
  }

  /// The units that matter within a quoted string.
  BlockFlags QuotesAndBackslashes() const noexcept {
    return kMask & (lanes_.EqualTo('"') | lanes_.EqualTo('\\')).Flags();
  }

  BlockFlags NotDigits() const noexcept { return kMask & ~(lanes_ - '0').Below(10).Flags(); }

  /// The characters above U+FFFF among `Count` ones.
  template <typename Unit>
  static BlockFlags TooWide([[maybe_unused]] const Unit* from) noexcept {
    if constexpr (sizeof(Unit) == sizeof(char16_t)) {
      return 0;
    } else {
      return kMask & ~UnitLanes::LoadHigh<Count>(from).EqualTo(0).Flags();
    }
  }

 private:
  static constexpr BlockFlags kMask = (BlockFlags{1} << 2 * Count) - 1;

  UnitLanes lanes_;
};

/// Calls `use(block, position)` with blocks that cover `size` units, the last two of which may overlap; below four
/// units `use_unit(position)` with each instead. Stops when a call returns false, and returns what the last one did.
template <typename Unit, typename Use, typename UseUnit>
inline bool ForEachBlock(const Unit* units, std::size_t size, const Use& use, const UseUnit& use_unit) {
  if (size >= 8) {
    for (std::size_t i = 0; i + 8 < size; i += 8) {
      if (!use(UnitBlock<8>(units + i), i)) {
        return false;
      }
    }
    return use(UnitBlock<8>(units + size - 8), size - 8);
  }
  if (size >= 4) {
    return use(UnitBlock<4>(units), std::size_t{0}) && use(UnitBlock<4>(units + size - 4), size - 4);
  }
  for (std::size_t i = 0; i < size; ++i) {
    if (!use_unit(i)) {
      return false;
    }
  }
  return true;
}

/// Copies units between types; what does not fit is cut off.
template <typename From, typename To>
inline void CopyUnits(const From* from, std::size_t size, To* to) noexcept {
  ForEachBlock(
      from, size,
      [to](const auto& block, std::size_t i) {
        block.Store(to + i);
        return true;
      },
      [from, to](std::size_t i) {
        to[i] = static_cast<To>(from[i]);
        return true;
      });
}

}  // namespace Zelto::Json
