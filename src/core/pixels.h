// Pixels inside a row, at any depth. Within a byte, 1-bit pixels run from the most significant bit
// and 4-bit pixels from the high nibble.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/read_ahead.h"

namespace ombrilo {

// The pixels whose indices or colors are held at a time: they stay in the first-level cache. A
// multiple of 8, so that runs are whole bytes at any depth.
inline constexpr size_t kRun = 1024;

// Unpacks a 1-, 4- or 8-bit row to one index per byte. Reads only the bytes that hold the pixels.
void UnpackIndices(const uint8_t* row, uint16_t bit_count, size_t pixels, uint8_t* indices);

// Packs one index per byte into a 1-, 4- or 8-bit row; only the low bits of an index count. Bits of
// the row after the last pixel keep their values.
void PackIndices(const uint8_t* indices, uint16_t bit_count, size_t pixels, uint8_t* row);
// The same from column `first` of the row on. Bits before it keep their values too.
void PackIndices(const uint8_t* indices, uint16_t bit_count, size_t first, size_t pixels,
                 uint8_t* row);

// Copies `pixels` pixels from column `column` of one row to the start of another, at 1, 4, 8, 16,
// 24 or 32 bits. Bits of the last byte after the last pixel keep their values.
void CopyPixels(const uint8_t* row, uint16_t bit_count, size_t column, size_t pixels, uint8_t* to);

// One pixel of a 1-, 4- or 8-bit row, for walks that must see each change at once.
uint8_t GetIndex(const uint8_t* row, uint16_t bit_count, size_t column);
void SetIndex(uint8_t* row, uint16_t bit_count, size_t column, uint8_t index);

// Calls use(first, indices, count) for the pixels of a 1-, 4- or 8-bit row, run by run, one index
// per byte in a buffer that `use` may change.
template <class Use>
void ForEachIndexRun(const uint8_t* row, uint16_t bit_count, size_t pixels, Use&& use) {
  uint8_t indices[kRun];
  for (size_t first = 0; first < pixels; first += kRun) {
    const size_t count = std::min(kRun, pixels - first);
    const uint8_t* const from = row + first * bit_count / 8;
    ReadFurtherOn(from, count * bit_count / 8);
    UnpackIndices(from, bit_count, count, indices);
    use(first, indices, count);
  }
}

}  // namespace ombrilo
