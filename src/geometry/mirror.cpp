#include "geometry/mirror.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr size_t kChunk = 1024;

// Reverses `count` units of kSize bytes, by exchanging chunks from both ends.
template <size_t kSize, class Mirror>
void MirrorUnits(uint8_t* row, size_t count, Mirror mirror) {
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

// Moves the bits of a row up by 1 to 7 places.
void ShiftRow(uint8_t* row, size_t shift, size_t bytes) {
  uint8_t chunk[kChunk + 1];
  for (size_t at = 0; at < bytes; at += kChunk) {
    const size_t n = std::min(kChunk, bytes - at);
    std::memcpy(chunk, row + at, n);
    chunk[n] = at + n < bytes ? row[at + n] : 0;
    rows::Active().shift_bits(chunk, shift, n, row + at);
  }
}

struct PixelOrders {
  uint8_t bits[256], nibbles[256];
};

// Bytes with their 1- and 4-bit pixels in reverse order.
constexpr PixelOrders kReversed = [] {
  PixelOrders orders = {};
  for (int i = 0; i < 256; ++i) {
    for (int bit = 0; bit < 8; ++bit) {
      orders.bits[i] = static_cast<uint8_t>(orders.bits[i] | (i >> bit & 1) << (7 - bit));
    }
    orders.nibbles[i] = static_cast<uint8_t>(i << 4 | i >> 4);
  }
  return orders;
}();

}  // namespace

void MirrorRow(uint8_t* row, uint16_t bit_count, int32_t width) {
  const rows::RowFunctions& functions = rows::Active();
  const size_t pixels = static_cast<size_t>(width);
  if (bit_count == 24) return MirrorUnits<3>(row, pixels, functions.mirror24);
  if (bit_count == 8) return MirrorUnits<1>(row, pixels, functions.mirror8);

  const size_t bytes = (pixels * bit_count + 7) / 8;
  if (bytes == 0) return;
  const size_t behind = 8 * bytes - pixels * bit_count;
  const uint8_t kept = static_cast<uint8_t>(row[bytes - 1] & ((1u << behind) - 1));
  MirrorUnits<1>(row, bytes, functions.mirror8);
  functions.apply_table(row, bytes, bit_count == 1 ? kReversed.bits : kReversed.nibbles);
  // The bits from behind the last pixel came to the front.
  if (behind != 0) ShiftRow(row, behind, bytes);
  row[bytes - 1] = static_cast<uint8_t>(row[bytes - 1] | kept);
}

}  // namespace ombrilo
