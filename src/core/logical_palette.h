// LOGPALETTE, the layout of Windows' logical palettes: version, number of entries, then red, green,
// blue and flags of each entry.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/buffer.h"
#include "core/bytes.h"

namespace ombrilo {

// Where the entries begin.
inline constexpr size_t kLogicalPaletteEntries = 4;

// A palette with room for `count` entries, all 0; null when memory runs out. Its count field has
// the low 16 bits of the number. The block is four bytes longer than its entries need: that is the
// contract.
inline Buffer<uint8_t> NewLogicalPalette(uint32_t count) {
  constexpr uint16_t kVersion = 0x300;
  Buffer<uint8_t> palette = NewZeroedBuffer<uint8_t>(count * size_t{4} + 8);
  if (!palette) return palette;
  StoreU16(palette.get(), kVersion);
  StoreU16(palette.get() + 2, static_cast<uint16_t>(count));
  return palette;
}

}  // namespace ombrilo
