/// @file
/// Asking for memory ahead of its use. Not installed.
#pragma once

#include "zelto/json/data_object.h"

#include <cstdint>

#if defined(_M_X64) && !defined(__GNUC__)
#include <xmmintrin.h>
#endif

namespace Zelto::Json {

/// Fetches an object that is soon to be looked at, and the beginning of its storage, which mostly lies right behind it.
/// Objects in the order of their keys are in no order in memory, so that the processor cannot foresee where the next
/// one is.
inline void Prefetch(const DataObject& object) noexcept {
  constexpr std::uintptr_t kBytes = 192;
  constexpr std::uintptr_t kCacheLine = 64;
  const auto first = reinterpret_cast<std::uintptr_t>(&object);
  for (std::uintptr_t at = first; at < first + kBytes; at += kCacheLine) {
#if defined(__GNUC__)
    __builtin_prefetch(reinterpret_cast<const void*>(at));
#elif defined(_M_X64)
    _mm_prefetch(reinterpret_cast<const char*>(at), _MM_HINT_T0);
#endif
  }
}

}  // namespace Zelto::Json
