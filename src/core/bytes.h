// Little-endian fields at any alignment, as headers, color tables and masks hold them.
#pragma once

#include <cstdint>

namespace ombrilo {

inline uint16_t LoadU16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }

inline uint32_t LoadU32(const uint8_t* p) {
  return p[0] | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16 |
         static_cast<uint32_t>(p[3]) << 24;
}

inline void StoreU16(uint8_t* p, uint16_t value) {
  p[0] = static_cast<uint8_t>(value);
  p[1] = static_cast<uint8_t>(value >> 8);
}

inline void StoreU32(uint8_t* p, uint32_t value) {
  StoreU16(p, static_cast<uint16_t>(value));
  StoreU16(p + 2, static_cast<uint16_t>(value >> 16));
}

}  // namespace ombrilo
