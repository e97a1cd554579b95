#include "geometry/mirror.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr size_t kChunk = 3 * 1024;

// Reverses the pixels of `count` bytes, in place by swapping chunks from both ends, or onto another
// row.
void MirrorBytes(const uint8_t* from, uint16_t bit_count, size_t count, uint8_t* to) {
  const auto mirror = simd::Active().mirror;
  if (from != to) return mirror(from, count, bit_count, to);
  uint8_t left[kChunk], right[kChunk];
  uint8_t* first = to;
  uint8_t* end = to + count;
  while (count > kChunk) {
    const size_t n = std::min(kChunk, count / 6 * 3);  // of whole pixels
    std::memcpy(left, first, n);
    end -= n;
    std::memcpy(right, end, n);
    mirror(left, n, bit_count, end);
    mirror(right, n, bit_count, first);
    first += n;
    count -= 2 * n;
  }
  std::memcpy(left, first, count);
  mirror(left, count, bit_count, first);
}

}  // namespace

void MirrorRow(const uint8_t* from, uint16_t bit_count, int32_t width, uint8_t* to) {
  const size_t pixels = static_cast<size_t>(width);
  if (bit_count >= 8) return MirrorBytes(from, bit_count, pixels * bit_count / 8, to);

  const size_t bytes = (pixels * bit_count + 7) / 8;
  if (bytes == 0) return;
  uint8_t& last = to[bytes - 1];
  const size_t spare = 8 * bytes - pixels * bit_count;
  const uint8_t kept = static_cast<uint8_t>(last & ((1u << spare) - 1));
  MirrorBytes(from, bit_count, bytes, to);
  // The bits after the last pixel are now at the front.
  if (spare != 0) simd::Active().shift_bits(to, spare, bytes - 1, to);
  last = static_cast<uint8_t>(last << spare | kept);
}

}  // namespace ombrilo
