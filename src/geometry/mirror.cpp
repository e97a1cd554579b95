#include "geometry/mirror.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr size_t kChunk = 1024;

// Reverses `count` units of kSize bytes in place, by exchanging chunks from both ends.
template <size_t kSize, class Mirror>
void Exchange(uint8_t* row, size_t count, Mirror mirror) {
  uint8_t left[kSize * kChunk], right[kSize * kChunk];
  uint8_t* first = row;
  uint8_t* end = row + kSize * count;
  while (count > kChunk) {
    const size_t n = std::min(kChunk, count / 2);
    std::memcpy(left, first, kSize * n);
    end -= kSize * n;
    std::memcpy(right, end, kSize * n);
    mirror(left, n, end);
    mirror(right, n, first);
    first += kSize * n;
    count -= 2 * n;
  }
  std::memcpy(left, first, kSize * count);
  mirror(left, count, first);
}

// Reverses pixels of bytes, in place or onto another row.
void MirrorUnits(const uint8_t* from, uint16_t bit_count, size_t count, uint8_t* to) {
  const simd::RowFunctions& functions = simd::Active();
  const auto mirror = bit_count == 24  ? functions.mirror24
                      : bit_count == 8 ? functions.mirror8
                      : bit_count == 4 ? functions.mirror4
                                       : functions.mirror1;
  if (from != to) return mirror(from, count, to);
  bit_count == 24 ? Exchange<3>(to, count, mirror) : Exchange<1>(to, count, mirror);
}

}  // namespace

void MirrorRow(const uint8_t* from, uint16_t bit_count, int32_t width, uint8_t* to) {
  const size_t pixels = static_cast<size_t>(width);
  if (bit_count >= 8) return MirrorUnits(from, bit_count, pixels, to);

  const size_t bytes = (pixels * bit_count + 7) / 8;
  if (bytes == 0) return;
  uint8_t& last = to[bytes - 1];
  const size_t behind = 8 * bytes - pixels * bit_count;
  const uint8_t kept = static_cast<uint8_t>(last & ((1u << behind) - 1));
  MirrorUnits(from, bit_count, bytes, to);
  // The bits from behind the last pixel came to the front.
  if (behind != 0) simd::Active().shift_bits(to, behind, bytes - 1, to);
  last = static_cast<uint8_t>(last << behind | kept);
}

}  // namespace ombrilo
