/// @file
/// Eight 16-bit units side by side: a vector where there is SSE2, an array elsewhere. Not installed.
///
/// Both forms have the same members. `Load` and `Store` move the first `Count` units, 4 or 8; the other lanes are of no
/// use. A test gives lanes that are all ones where it holds and zeros elsewhere, and `Flags` gathers them in a number.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#else
#include <array>
#endif

namespace Zelto::Json {

/// Two bits per unit, the first unit's are the lowest.
using BlockFlags = std::uint32_t;

#if defined(__SSE2__) || defined(_M_X64)

class UnitLanes {
 public:
  /// Of wider characters the low 16 bits.
  template <std::size_t Count, typename Unit>
  static UnitLanes Load(const Unit* from) noexcept {
    if constexpr (sizeof(Unit) == sizeof(char16_t)) {
      const auto* units = reinterpret_cast<const __m128i*>(from);
      return UnitLanes(Count == 8 ? _mm_loadu_si128(units) : _mm_loadl_epi64(units));
    } else {
      return Pack<Count>(from, [](__m128i four) { return _mm_srai_epi32(_mm_slli_epi32(four, 16), 16); });
    }
  }

  /// Of wider characters the high 16 bits, of others zeros.
  template <std::size_t Count, typename Unit>
  static UnitLanes LoadHigh(const Unit* from) noexcept {
    if constexpr (sizeof(Unit) == sizeof(char16_t)) {
      return UnitLanes(_mm_setzero_si128());
    } else {
      return Pack<Count>(from, [](__m128i four) { return _mm_srai_epi32(four, 16); });
    }
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

  UnitLanes EqualTo(std::uint16_t unit) const noexcept { return UnitLanes(_mm_cmpeq_epi16(lanes_, All(unit))); }
  /// @param limit  above 0
  UnitLanes Below(std::uint16_t limit) const noexcept {
    return UnitLanes(_mm_subs_epu16(lanes_, All(static_cast<std::uint16_t>(limit - 1)))).EqualTo(0);
  }
  UnitLanes operator-(std::uint16_t unit) const noexcept { return UnitLanes(_mm_sub_epi16(lanes_, All(unit))); }
  UnitLanes operator|(UnitLanes other) const noexcept { return UnitLanes(_mm_or_si128(lanes_, other.lanes_)); }

  BlockFlags Flags() const noexcept { return static_cast<BlockFlags>(_mm_movemask_epi8(lanes_)); }

 private:
  explicit UnitLanes(__m128i lanes) noexcept : lanes_(lanes) {}

  static __m128i All(std::uint16_t unit) noexcept { return _mm_set1_epi16(static_cast<short>(unit)); }

  // Packs characters of 32 bits of which `half` makes signed numbers of 16.
  template <std::size_t Count, typename Unit, typename Half>
  static UnitLanes Pack(const Unit* from, const Half& half) noexcept {
    const auto* characters = reinterpret_cast<const __m128i*>(from);
    const __m128i low = half(_mm_loadu_si128(characters));
    const __m128i high = Count == 8 ? half(_mm_loadu_si128(characters + Count / 8)) : low;
    return UnitLanes(_mm_packs_epi32(low, high));
  }

  __m128i lanes_;
};

#else

class UnitLanes {
 public:
  template <std::size_t Count, typename Unit>
  static UnitLanes Load(const Unit* from) noexcept {
    return Make<Count>([from](std::size_t i) { return static_cast<std::uint32_t>(from[i]); });
  }

  template <std::size_t Count, typename Unit>
  static UnitLanes LoadHigh(const Unit* from) noexcept {
    return Make<Count>([from](std::size_t i) { return static_cast<std::uint32_t>(from[i]) >> 16; });
  }

  template <std::size_t Count, typename Unit>
  void Store(Unit* to) const noexcept {
    for (std::size_t i = 0; i < Count; ++i) {
      to[i] = static_cast<Unit>(lanes_[i]);
    }
  }

  UnitLanes EqualTo(std::uint16_t unit) const noexcept {
    return Make<8>([this, unit](std::size_t i) { return lanes_[i] == unit ? 0xFFFFU : 0U; });
  }
  UnitLanes Below(std::uint16_t limit) const noexcept {
    return Make<8>([this, limit](std::size_t i) { return lanes_[i] < limit ? 0xFFFFU : 0U; });
  }
  UnitLanes operator-(std::uint16_t unit) const noexcept {
    return Make<8>([this, unit](std::size_t i) { return std::uint32_t{lanes_[i]} - unit; });
  }
  UnitLanes operator|(const UnitLanes& other) const noexcept {
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
  static UnitLanes Make(const Lane& lane) noexcept {
    UnitLanes made;
    for (std::size_t i = 0; i < Count; ++i) {
      made.lanes_[i] = static_cast<std::uint16_t>(lane(i));
    }
    return made;
  }

  std::array<std::uint16_t, 8> lanes_{};
};

#endif

}  // namespace Zelto::Json
