#include "core/pixels.h"

#include <cstring>

#include "rows/row_functions.h"

namespace ombrilo {

namespace {

// Replaces the first `bits` (0 to 7) bits of `to`.
void CopyLeadingBits(uint8_t from, size_t bits, uint8_t& to) {
  const uint8_t mask = static_cast<uint8_t>(0xFF00u >> bits);
  to = static_cast<uint8_t>((from & mask) | (to & ~mask));
}

}  // namespace

void UnpackIndices(const uint8_t* row, uint16_t bit_count, size_t pixels, uint8_t* indices) {
  switch (bit_count) {
    case 1:
      simd::Active().unpack1(row, pixels, indices);
      break;
    case 4:
      simd::Active().unpack4(row, pixels, indices);
      break;
    case 8:
      std::memcpy(indices, row, pixels);
      break;
  }
}

void PackIndices(const uint8_t* indices, uint16_t bit_count, size_t pixels, uint8_t* row) {
  switch (bit_count) {
    case 1:
      simd::Active().pack1(indices, pixels, row);
      break;
    case 4:
      simd::Active().pack4(indices, pixels, row);
      break;
    case 8:
      std::memcpy(row, indices, pixels);
      break;
  }
}

void PackIndices(const uint8_t* indices, uint16_t bit_count, size_t first, size_t pixels,
                 uint8_t* row) {
  for (; first % 8 != 0 && pixels != 0; --pixels) SetIndex(row, bit_count, first++, *indices++);
  PackIndices(indices, bit_count, pixels, row + first * bit_count / 8);
}

uint8_t GetIndex(const uint8_t* row, uint16_t bit_count, size_t column) {
  const size_t first_bit = column * bit_count;
  const size_t shift = 8 - bit_count - first_bit % 8;
  return static_cast<uint8_t>(row[first_bit / 8] >> shift & ((1u << bit_count) - 1));
}

void SetIndex(uint8_t* row, uint16_t bit_count, size_t column, uint8_t index) {
  const size_t first_bit = column * bit_count;
  const size_t shift = 8 - bit_count - first_bit % 8;
  const unsigned mask = ((1u << bit_count) - 1) << shift;
  uint8_t& byte = row[first_bit / 8];
  byte = static_cast<uint8_t>((byte & ~mask) | (static_cast<unsigned>(index) << shift & mask));
}

void CopyPixels(const uint8_t* row, uint16_t bit_count, size_t column, size_t pixels, uint8_t* to) {
  const size_t first_bit = column * bit_count;
  const size_t bits = pixels * bit_count;
  const uint8_t* from = row + first_bit / 8;
  const size_t shift = first_bit % 8;
  const size_t whole = bits / 8;
  const size_t rest = bits % 8;
  if (shift == 0) {
    if (whole != 0) std::memcpy(to, from, whole);
    if (rest != 0) CopyLeadingBits(from[whole], rest, to[whole]);
    return;
  }
  simd::Active().shift_bits(from, shift, whole, to);
  if (rest != 0) {
    uint8_t last = static_cast<uint8_t>(from[whole] << shift);
    if (shift + rest > 8) last = static_cast<uint8_t>(last | from[whole + 1] >> (8 - shift));
    CopyLeadingBits(last, rest, to[whole]);
  }
}

}  // namespace ombrilo
