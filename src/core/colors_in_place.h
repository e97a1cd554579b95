// The frame of operations that map colors to colors in place: in the color table of an indexed
// image, or in the pixels of a 24-bit one.
//
// An operation is a callable `op(uint8_t* bgr, size_t colors)` that changes a run of packed B,G,R
// colors. It sees the table in pieces of at most 256 colors and the pixels row by row, never
// padding or reserved bytes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/color_table.h"
#include "core/packed_dib.h"
#include "core/read_ahead.h"
#include "rows/row_functions.h"

namespace ombrilo {

// Applies `op` to the entries that the header announces, at any depth.
template <class Op>
void ChangeTableColors(const Dib& dib, Op&& op) {
  constexpr uint32_t kRun = 256;
  uint8_t bgr[3 * kRun];
  for (uint32_t first = 0; first < dib.header().table_count(); first += kRun) {
    const uint32_t count = std::min<uint32_t>(kRun, dib.header().table_count() - first);
    ReadColors(dib, first, count, bgr);
    op(bgr, size_t{count});
    WriteColors(dib, first, count, bgr);
  }
}

// Applies `op` to the bytes of consecutive colors, in one run or, where no cache holds the image,
// in pieces, while what lies further on is fetched: a third faster than what the processor fetches
// by itself. All pieces but the first begin at a cache line.
template <class Op>
void ChangeBytes(const Dib& dib, uint8_t* bytes, size_t count, Op&& op) {
  constexpr size_t kLine = simd::kCacheLine, kPiece = 3 * 8 * kLine, kAhead = 8192;
  const size_t size = dib.stride() * static_cast<size_t>(dib.pixel_rows());
  if (size < kCached) return op(bytes, count);
  const uint8_t* const end = dib.rows() + size;
  // The first line at which a color begins: 3 * 43 is 1 more than two lines.
  const size_t head = 3 * ((0 - reinterpret_cast<uintptr_t>(bytes)) % kLine * 43 % kLine);
  for (size_t first = 0, last = head + kPiece; first < count; first = last, last += kPiece) {
    uint8_t* const piece = bytes + first;
    const size_t n = std::min(last, count) - first;
    const size_t left = static_cast<size_t>(end - piece);
    if (left > kAhead) ReadAhead<1>(piece + kAhead, std::min(n, left - kAhead));
    op(piece, n);
  }
}

// Applies `op` to every pixel of a 24-bit image; rows without padding are a single run.
template <class Op>
void ChangePixelColors(const Dib& dib, Op&& op) {
  const size_t rows = static_cast<size_t>(dib.pixel_rows());
  const size_t row_bytes = 3 * static_cast<size_t>(dib.width());
  const auto change = [&](uint8_t* bytes, size_t count) { op(bytes, count / 3); };
  if (dib.stride() == row_bytes) return ChangeBytes(dib, dib.rows(), rows * row_bytes, change);
  for (size_t y = 0; y < rows; ++y) {
    ChangeBytes(dib, dib.rows() + y * dib.stride(), row_bytes, change);
  }
}

// The usual choice: the table of 1-, 4- and 8-bit images, the pixels of 24-bit ones. False, and
// nothing changed, at every other depth.
template <class Op>
bool ChangeColors(const Dib& dib, Op&& op) {
  if (dib.indexed()) {
    ChangeTableColors(dib, op);
    return true;
  }
  if (dib.bit_count() == 24) {
    ChangePixelColors(dib, op);
    return true;
  }
  return false;
}

// The choice by the color table: its entries when the header announces any, at any depth; otherwise
// the pixel data, whose bytes are taken three to a pixel at any depth. Here `op` gets bytes,
// `op(uint8_t* bytes, size_t count)`, beginning with a blue one.
//
// At 24 bits these are the bytes of the pixel rows. At other depths the walk does not follow the
// rows: for each row it takes 3 x width bytes and skips the difference between the row length and
// the pixels' bytes. It ends with the pixel data, in the middle of a pixel if need be.
template <class Op>
void ChangeTableOrBytes(const Dib& dib, Op&& op) {
  if (dib.header().table_count() != 0) {
    ChangeTableColors(dib, [&](uint8_t* bgr, size_t colors) { op(bgr, 3 * colors); });
    return;
  }
  const size_t width = static_cast<size_t>(dib.width());
  const size_t row_bytes = 3 * width;
  const size_t gap = dib.stride() - width * dib.bit_count() / 8;
  const size_t rows = static_cast<size_t>(dib.pixel_rows());
  const size_t end = rows * dib.stride();
  if (gap == 0) return ChangeBytes(dib, dib.rows(), std::min(rows * row_bytes, end), op);
  size_t at = 0;
  for (size_t y = 0; y < rows && at < end; ++y, at += row_bytes + gap) {
    ChangeBytes(dib, dib.rows() + at, std::min(row_bytes, end - at), op);
  }
}

}  // namespace ombrilo
