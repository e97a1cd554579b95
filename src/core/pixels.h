// Pixels inside a row, at any depth. Within a byte, 1-bit pixels run from the most significant bit
// and 4-bit pixels from the high nibble. This is the only file that knows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ombrilo {

// One index per byte, out of a 1-, 4- or 8-bit row. Reads only the bytes that hold the pixels.
void UnpackIndices(const uint8_t* row, uint16_t bit_count, size_t pixels, uint8_t* indices);

// One index per byte into a 1-, 4- or 8-bit row; only the low bits of an index count. Bits of the
// row behind the last pixel keep their values.
void PackIndices(const uint8_t* indices, uint16_t bit_count, size_t pixels, uint8_t* row);

// Copies `pixels` pixels from column `column` of one row to the start of another, at 1, 4, 8, 16,
// 24 or 32 bits. Bits of the last byte behind the last pixel keep their values.
void CopyPixels(const uint8_t* row, uint16_t bit_count, size_t column, size_t pixels, uint8_t* to);

// Where a row holds a pixel: its first byte, and for 1-, 4- and 8-bit pixels how far that byte is
// shifted down to bring the index to the low bits.
struct PixelPlace {
  int32_t byte;
  uint8_t shift;
};

template <int kBitCount>
constexpr PixelPlace PlaceOf(int32_t column) {
  static_assert(kBitCount == 1 || kBitCount == 4 || kBitCount == 8 || kBitCount == 24);
  if (kBitCount == 1) return {column >> 3, static_cast<uint8_t>(7 - (column & 7))};
  if (kBitCount == 4) return {column >> 1, static_cast<uint8_t>(4 - (column & 1) * 4)};
  return {column * (kBitCount / 8), 0};
}

}  // namespace ombrilo
