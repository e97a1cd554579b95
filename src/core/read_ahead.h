// Asks for memory before it is needed, where the processor cannot foresee it: one row does not
// continue the one before it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ombrilo {

// Into the second-level cache. There is room for few requests of the nearest one: it made no
// difference where this takes half of the time off.
inline void ReadAhead(const uint8_t* bytes, size_t count) {
  constexpr size_t kLine = 64;
  for (size_t i = 0; i < count; i += kLine) __builtin_prefetch(bytes + i, 0, 2);
}

}  // namespace ombrilo
