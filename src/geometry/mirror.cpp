#include "geometry/mirror.h"

#include <algorithm>
#include <cstddef>

#include "core/read_ahead.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr size_t kPiece = 768;  // bytes; whole pixels

// Reverses the pixels of `count` bytes by swapping the two halves. What is to be read next is
// fetched piece by piece: the processor foresees neither end of a row, and all at once gained
// nothing.
void SwapHalves(uint8_t* row, uint16_t bit_count, size_t count, const uint8_t* next) {
  const simd::RowFunctions& rows = simd::Active();
  const size_t unit = bit_count == 24 ? 3 : 1, half = count / unit / 2 * unit;
  for (size_t at = 0, n; at < half; at += n) {
    n = std::min(kPiece, half - at);
    if (next != nullptr) ReadAhead<1>(next + 2 * at, 2 * n);
    rows.swap_mirrored(row + at, row + count - at - n, n, bit_count);
  }
  if (bit_count < 8 && count % 2 != 0) {
    const uint8_t middle = row[half];
    rows.mirror(&middle, 1, bit_count, row + half);
  }
}

// `mirror(count)` reverses the bytes of `to` or stores them there. The bits after the last pixel
// are at the front then, and move back.
template <class Mirror>
void MirrorPixels(uint8_t* to, uint16_t bit_count, int32_t width, Mirror mirror) {
  const size_t bits = static_cast<size_t>(width) * bit_count, bytes = (bits + 7) / 8;
  const size_t spare = 8 * bytes - bits;
  if (spare == 0) return mirror(bytes);
  uint8_t& last = to[bytes - 1];
  const uint8_t kept = static_cast<uint8_t>(last & ((1u << spare) - 1));
  mirror(bytes);
  simd::Active().shift_bits(to, spare, bytes - 1, to);
  last = static_cast<uint8_t>(last << spare | kept);
}

}  // namespace

void MirrorRow(const uint8_t* from, uint16_t bit_count, int32_t width, uint8_t* to) {
  MirrorPixels(to, bit_count, width,
               [=](size_t bytes) { simd::Active().mirror(from, bytes, bit_count, to); });
}

void MirrorRowInPlace(uint8_t* row, uint16_t bit_count, int32_t width, const uint8_t* next) {
  MirrorPixels(row, bit_count, width,
               [=](size_t bytes) { SwapHalves(row, bit_count, bytes, next); });
}

}  // namespace ombrilo
