// Prefetches memory that the processor cannot foresee: one row does not continue the one before it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rows/row_functions.h"

namespace ombrilo {

// About what the caches of one core hold, and what processors have in their last one, in bytes.
inline constexpr uint64_t kCoreCached = 1 << 20, kCached = 16 << 20;

// Into the second-level cache, which halves the time of quarter turns, or into the first level,
// where few requests can wait at a time: that gains only where little is read at once.
template <int kLevel = 2>
void ReadAhead(const uint8_t* bytes, size_t count) {
  for (size_t i = 0; i < count; i += simd::kCacheLine) __builtin_prefetch(bytes + i, 0, 4 - kLevel);
  asm volatile("");  // GCC would take a function that does nothing else for one without effects
}

// The same for what lies simd::kFetchedAhead bytes further on. Beyond the image it does nothing.
inline void ReadFurtherOn(const uint8_t* bytes, size_t count) {
  const uintptr_t further = reinterpret_cast<uintptr_t>(bytes) + simd::kFetchedAhead;
  ReadAhead<1>(reinterpret_cast<const uint8_t*>(further), count);
}

}  // namespace ombrilo
