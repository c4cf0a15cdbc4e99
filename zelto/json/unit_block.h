/// @file
/// Text in steps of several units, which are the lanes of a vector where the compiler has vectors. Not installed.
#pragma once

#include "zelto/json/escapes.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Zelto::Json {

/// One byte per unit, the first unit's in the lowest bits: 0 when its flag is clear.
using BlockFlags = std::uint64_t;

/// The number of units before the first one whose flag is set.
inline std::size_t FirstFlag(BlockFlags flags) noexcept {
  static_assert(std::endian::native == std::endian::little);
  return static_cast<std::size_t>(std::countr_zero(flags)) / 8;
}

/// `Count` units, at most 8. Of wider characters only the low 16 bits are kept.
template <std::size_t Count>
class UnitBlock {
 public:
  template <typename Unit>
  explicit UnitBlock(const Unit* from) noexcept {
    LanesOf<Unit> wide;
    std::memcpy(&wide, from, sizeof(wide));
    Convert(wide, lanes_);
  }

  template <typename Unit>
  void Store(Unit* to) const noexcept {
    LanesOf<Unit> wide;
    Convert(lanes_, wide);
    std::memcpy(to, &wide, sizeof(wide));
  }

  /// The masked and the non-printing units.
  BlockFlags ToEscape() const noexcept {
    return FlagsOf(
        [](auto unit) { return (unit == '"') | (unit == '\\') | (unit == '/') | (unit < kFirstPrintingCode); });
  }

  /// The units that matter within a quoted string.
  BlockFlags QuotesAndBackslashes() const noexcept {
    return FlagsOf([](auto unit) { return (unit == '"') | (unit == '\\'); });
  }

 private:
#if defined(__GNUC__)
  template <typename Lane>
  struct VectorOf {
    typedef Lane Type __attribute__((vector_size(sizeof(Lane) * Count)));
  };
  template <typename Unit>
  using LanesOf =
      typename VectorOf<std::conditional_t<sizeof(Unit) == sizeof(std::uint16_t), std::uint16_t, std::uint32_t>>::Type;
  using Lanes = LanesOf<char16_t>;

  template <typename From, typename To>
  static void Convert(const From& from, To& to) noexcept {
    to = __builtin_convertvector(from, To);
  }

  template <typename Test>
  BlockFlags FlagsOf(const Test& test) const noexcept {
    typename VectorOf<std::int8_t>::Type bytes;
    Convert(test(lanes_), bytes);
    BlockFlags flags = 0;
    std::memcpy(&flags, &bytes, sizeof(bytes));
    return flags;
  }
#else
  template <typename Unit>
  using LanesOf = std::array<Unit, Count>;
  using Lanes = LanesOf<std::uint16_t>;

  template <typename From, typename To>
  static void Convert(const From& from, To& to) noexcept {
    for (std::size_t i = 0; i < Count; ++i) {
      to[i] = static_cast<typename To::value_type>(from[i]);
    }
  }

  template <typename Test>
  BlockFlags FlagsOf(const Test& test) const noexcept {
    BlockFlags flags = 0;
    for (std::size_t i = 0; i < Count; ++i) {
      flags |= BlockFlags{test(lanes_[i]) ? 0xFFU : 0U} << (8 * i);
    }
    return flags;
  }
#endif

  Lanes lanes_;
};

/// Not 0 when a character is above U+FFFF.
inline std::uint32_t HighBitsOf(wchar_t character) noexcept {
  if constexpr (sizeof(wchar_t) > sizeof(char16_t)) {
    return static_cast<std::uint32_t>(character) >> 16;
  } else {
    return 0;
  }
}

/// The same for eight characters at once.
inline std::uint32_t HighBitsOf8(const wchar_t* characters) noexcept {
  if constexpr (sizeof(wchar_t) > sizeof(char16_t)) {
    std::uint64_t pairs[4];
    std::memcpy(pairs, characters, sizeof(pairs));
    const std::uint64_t seen = pairs[0] | pairs[1] | pairs[2] | pairs[3];
    return static_cast<std::uint32_t>((seen | seen >> 32) >> 16) & 0xFFFFU;
  } else {
    return 0;
  }
}

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
