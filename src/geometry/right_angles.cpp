// A half turn mirrors each row. A quarter turn is a transposition with the rows or the columns in
// reverse order. It goes tile by tile, so that the cache lines a tile touches on both sides stay in
// the cache, and inside a tile by squares of 8 x 8 pixels (4 x 4 at 24 bits) that are transposed in
// registers; at 1 bit such a square is one u64 (H. S. Warren, "Hacker's Delight", section 7-3).
#include "geometry/right_angles.h"

#include <algorithm>
#include <cstring>

#include "core/read_ahead.h"
#include "core/replacement.h"
#include "geometry/mirror.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

// A transposition: source columns become rows.
struct Transposition {
  const uint8_t* from;  // the source row that gives every new row's first pixel
  ptrdiff_t from_step;  // to the row that gives the next
  uint8_t* to;          // the new row that source column 0 becomes
  ptrdiff_t to_step;    // to the row that the next column becomes

  const uint8_t* Source(int32_t i) const { return from + i * from_step; }
  uint8_t* New(int32_t c) const { return to + c * to_step; }
};

// Columns [c, c_end) and pixels [i, i_end) of the new rows; c and i are multiples of 8.
struct Tile {
  int32_t c, c_end, i, i_end;
};

void Turn24(const Transposition& t, const Tile& tile) {
  simd::Active().transpose24(
      t.Source(tile.i) + 3 * tile.c, t.from_step, static_cast<size_t>(tile.c_end - tile.c),
      static_cast<size_t>(tile.i_end - tile.i), t.New(tile.c) + 3 * tile.i, t.to_step);
}

// Swaps the upper bytes of `low` with the lower bytes of `high`; the mask selects lower ones.
void Exchange(uint64_t& low, uint64_t& high, int bits, uint64_t mask) {
  const uint64_t differing = (low >> bits ^ high) & mask;
  low ^= differing << bits;
  high ^= differing;
}

void TurnSquare8(const Transposition& t, int32_t c, int32_t i) {
  uint64_t rows[8];
  for (int k = 0; k < 8; ++k) std::memcpy(&rows[k], t.Source(i + k) + c, 8);
  for (int k = 0; k < 4; ++k) Exchange(rows[k], rows[k + 4], 32, 0x00000000FFFFFFFFu);
  for (const int k : {0, 1, 4, 5}) Exchange(rows[k], rows[k + 2], 16, 0x0000FFFF0000FFFFu);
  for (const int k : {0, 2, 4, 6}) Exchange(rows[k], rows[k + 1], 8, 0x00FF00FF00FF00FFu);
  for (int k = 0; k < 8; ++k) std::memcpy(t.New(c + k) + i, &rows[k], 8);
}

void Turn8(const Transposition& t, const Tile& tile) {
  const int32_t c_squares = tile.c_end & ~7, i_squares = tile.i_end & ~7;
  for (int32_t c = tile.c; c < c_squares; c += 8) {
    for (int32_t i = tile.i; i < i_squares; i += 8) TurnSquare8(t, c, i);
  }
  for (int32_t c = tile.c; c < tile.c_end; ++c) {
    const int32_t first = c < c_squares ? std::max(tile.i, i_squares) : tile.i;
    for (int32_t i = first; i < tile.i_end; ++i) t.New(c)[i] = t.Source(i)[c];
  }
}

void Turn4(const Transposition& t, const Tile& tile) {
  for (int32_t c = tile.c; c < tile.c_end; ++c) {
    const int down = c % 2 == 0 ? 4 : 0;
    uint8_t* to = t.New(c);
    for (int32_t i = tile.i; i < tile.i_end; i += 2) {
      const int high = t.Source(i)[c / 2] >> down & 15;
      const int low = i + 1 < tile.i_end ? t.Source(i + 1)[c / 2] >> down & 15 : 0;
      to[i / 2] = static_cast<uint8_t>(high << 4 | low);
    }
  }
}

// Bit k of byte j becomes bit j of byte k, both counted from the top.
uint64_t TransposeBits(uint64_t x) {
  uint64_t swap = (x ^ x >> 7) & 0x00AA00AA00AA00AAu;
  x ^= swap ^ swap << 7;
  swap = (x ^ x >> 14) & 0x0000CCCC0000CCCCu;
  x ^= swap ^ swap << 14;
  swap = (x ^ x >> 28) & 0x00000000F0F0F0F0u;
  return x ^ swap ^ swap << 28;
}

void Turn1(const Transposition& t, const Tile& tile) {
  for (int32_t c = tile.c; c < tile.c_end; c += 8) {
    const int columns = std::min(8, tile.c_end - c);
    for (int32_t i = tile.i; i < tile.i_end; i += 8) {
      const int pixels = std::min(8, tile.i_end - i);
      uint64_t square = 0;
      for (int k = 0; k < pixels; ++k) {
        square |= uint64_t{t.Source(i + k)[c / 8]} << (56 - 8 * k);
      }
      square = TransposeBits(square);
      for (int k = 0; k < columns; ++k) {
        t.New(c + k)[i / 8] = static_cast<uint8_t>(square >> (56 - 8 * k));
      }
    }
  }
}

void Transpose(const Transposition& t, uint16_t bit_count, int32_t columns, int32_t pixels) {
  const auto turn = bit_count == 1   ? Turn1
                    : bit_count == 4 ? Turn4
                    : bit_count == 8 ? Turn8
                                     : Turn24;
  // Whole bytes, and so many pixels that memory is read and written in pieces of a few cache lines.
  const int32_t columns_at_once = bit_count < 8 ? 512 : 128,
                pixels_at_once = bit_count < 8 ? 512 : 192;
  for (int32_t c = 0, c_end; c < columns; c = c_end) {
    c_end = c + std::min(columns_at_once, columns - c);
    const size_t first = size_t{bit_count} * static_cast<size_t>(c) / 8;
    const size_t bytes = size_t{bit_count} * static_cast<size_t>(c_end - c) / 8;
    for (int32_t i = 0, i_end; i < pixels; i = i_end) {
      i_end = i + std::min(pixels_at_once, pixels - i);
      for (int32_t k = i; k < i_end; ++k) ReadAhead(t.Source(k) + first, bytes);
      turn(t, {c, c_end, i, i_end});
    }
  }
}

}  // namespace

uint32_t TurnByQuarters(PackedDib** image, const DibView& source, int quarters) {
  if (!source.indexed() && source.bit_count() != 24) return 0;
  const int32_t width = source.header().width, height = source.header().height;
  const int32_t new_width = quarters == 2 ? width : height;
  const int32_t new_height = quarters == 2 ? height : width;
  NewBlock block =
      NewBlock::Resized(source, new_width, new_height, NewBlock::Rows::kPixelsComeNext);
  if (!block) return 0;
  const Dib turned = block.dib();
  if (quarters == 2) {
    for (int32_t y = 0; y < turned.pixel_rows(); ++y) {
      MirrorRow(source.row(height - 1 - y), source.bit_count(), width, turned.row(y));
    }
  } else if (width != 0 && height != 0) {
    const auto from_step = static_cast<ptrdiff_t>(source.stride());
    const auto to_step = static_cast<ptrdiff_t>(turned.stride());
    const Transposition t =
        quarters == 1 ? Transposition{source.row(0), from_step, turned.row(width - 1), -to_step}
                      : Transposition{source.row(height - 1), -from_step, turned.row(0), to_step};
    Transpose(t, source.bit_count(), width, height);
  }
  return block.Replace(image);
}

}  // namespace ombrilo
