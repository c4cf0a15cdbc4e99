/// @file
/// Eight 16-bit units side by side: a vector where there is SSE2, an array elsewhere. Not installed.
///
/// Both forms have the same members. `Load` and `Store` move the first `Count` units, 4 or 8; the other lanes are of no
/// use. A test gives lanes that are all ones where it holds and zeros elsewhere, and `Flags` gathers them in a number.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace Zelto::Json {

/// Two bits per unit, the first unit's are the lowest.
using BlockFlags = std::uint32_t;

/// For every processor.
class ArrayLanes {
 public:
  /// Of characters of 32 bits the low 16.
  template <std::size_t Count, typename Unit>
  static ArrayLanes Load(const Unit* from) noexcept {
    return Make<Count>([from](std::size_t i) { return static_cast<std::uint32_t>(from[i]); });
  }

  /// Of characters of 32 bits the high 16.
  template <std::size_t Count, typename Unit>
  static ArrayLanes LoadHigh(const Unit* from) noexcept {
    return Make<Count>([from](std::size_t i) { return static_cast<std::uint32_t>(from[i]) >> 16; });
  }

  template <std::size_t Count, typename Unit>
  void Store(Unit* to) const noexcept {
    for (std::size_t i = 0; i < Count; ++i) {
      to[i] = static_cast<Unit>(lanes_[i]);
    }
  }

  ArrayLanes EqualTo(std::uint16_t unit) const noexcept {
    return Make<8>([this, unit](std::size_t i) { return lanes_[i] == unit ? 0xFFFFU : 0U; });
  }
  /// @param limit  above 0
  ArrayLanes Below(std::uint16_t limit) const noexcept {
    return Make<8>([this, limit](std::size_t i) { return lanes_[i] < limit ? 0xFFFFU : 0U; });
  }
  ArrayLanes operator-(std::uint16_t unit) const noexcept {
    return Make<8>([this, unit](std::size_t i) { return std::uint32_t{lanes_[i]} - unit; });
  }
  ArrayLanes operator|(const ArrayLanes& other) const noexcept {
    return Make<8>([this, &other](std::size_t i) { return std::uint32_t{lanes_[i]} | other.lanes_[i]; });
  }

  BlockFlags Flags() const noexcept {
    BlockFlags flags = 0;
    for (std::size_t i = 0; i < lanes_.size(); ++i) {
      flags |= (lanes_[i] & 3U) << 2 * i;
    }
    return flags;
  }

 private:
  template <std::size_t Count, typename Lane>
  static ArrayLanes Make(const Lane& lane) noexcept {
    ArrayLanes made;
    for (std::size_t i = 0; i < Count; ++i) {
      made.lanes_[i] = static_cast<std::uint16_t>(lane(i));
    }
    return made;
  }

  std::array<std::uint16_t, 8> lanes_{};
};

#if defined(__SSE2__) || defined(_M_X64)

/// The same with SSE2.
class VectorLanes {
 public:
  template <std::size_t Count, typename Unit>
  static VectorLanes Load(const Unit* from) noexcept {
    if constexpr (sizeof(Unit) == sizeof(char16_t)) {
      const auto* units = reinterpret_cast<const __m128i*>(from);
      return VectorLanes(Count == 8 ? _mm_loadu_si128(units) : _mm_loadl_epi64(units));
    } else {
      return Pack<Count>(from, [](__m128i four) { return _mm_srai_epi32(_mm_slli_epi32(four, 16), 16); });
    }
  }

  template <std::size_t Count, typename Unit>
  static VectorLanes LoadHigh(const Unit* from) noexcept {
    return Pack<Count>(from, [](__m128i four) { return _mm_srai_epi32(four, 16); });
  }

  template <std::size_t Count, typename Unit>
  void Store(Unit* to) const noexcept {
    auto* const target = reinterpret_cast<__m128i*>(to);
    if constexpr (sizeof(Unit) != sizeof(char16_t)) {
      _mm_storeu_si128(target, _mm_unpacklo_epi16(lanes_, _mm_setzero_si128()));
      if constexpr (Count == 8) {
        _mm_storeu_si128(target + 1, _mm_unpackhi_epi16(lanes_, _mm_setzero_si128()));
      }
    } else if constexpr (Count == 8) {
      _mm_storeu_si128(target, lanes_);
    } else {
      _mm_storel_epi64(target, lanes_);
    }
  }

  VectorLanes EqualTo(std::uint16_t unit) const noexcept { return VectorLanes(_mm_cmpeq_epi16(lanes_, All(unit))); }
  VectorLanes Below(std::uint16_t limit) const noexcept {
    return VectorLanes(_mm_subs_epu16(lanes_, All(static_cast<std::uint16_t>(limit - 1)))).EqualTo(0);
  }
  VectorLanes operator-(std::uint16_t unit) const noexcept { return VectorLanes(_mm_sub_epi16(lanes_, All(unit))); }
  VectorLanes operator|(VectorLanes other) const noexcept { return VectorLanes(_mm_or_si128(lanes_, other.lanes_)); }

  BlockFlags Flags() const noexcept { return static_cast<BlockFlags>(_mm_movemask_epi8(lanes_)); }

 private:
  explicit VectorLanes(__m128i lanes) noexcept : lanes_(lanes) {}

  static __m128i All(std::uint16_t unit) noexcept { return _mm_set1_epi16(static_cast<short>(unit)); }

  // Packs characters of 32 bits of which `half` makes signed numbers of 16.
  template <std::size_t Count, typename Unit, typename Half>
  static VectorLanes Pack(const Unit* from, const Half& half) noexcept {
    const auto* characters = reinterpret_cast<const __m128i*>(from);
    const __m128i low = half(_mm_loadu_si128(characters));
    __m128i high = low;
    if constexpr (Count == 8) {
      high = half(_mm_loadu_si128(characters + 1));
    }
    return VectorLanes(_mm_packs_epi32(low, high));
  }

  __m128i lanes_;
};

using UnitLanes = VectorLanes;

#else

using UnitLanes = ArrayLanes;

#endif

}  // namespace Zelto::Json
