// The frame of operations that map colors to colors in place: in the color table of an indexed
// image, or in the pixels of a 24-bit one.
//
// An operation is a callable `op(uint8_t* bgr, size_t colors)` that changes a run of packed B,G,R
// colors. It sees the table in pieces of at most 256 colors and the pixels in pieces of rows or, if
// they have no padding, of several rows; never padding or reserved bytes.
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
  ForEachTableRun(dib, [&](uint32_t first, uint8_t* bgr, uint32_t count) {
    op(bgr, size_t{count});
    WriteColors(dib, first, count, bgr);
  });
}

// Bytes: whole cache lines and colors. Larger pieces gain less, as fewer requests can wait.
constexpr size_t kColorsPiece = 3 * 8 * simd::kCacheLine;

// Applies `op` to the bytes of consecutive colors in pieces, while what lies further on, up to
// `end`, is fetched: up to a third faster than what the processor fetches by itself. All pieces but
// the first begin at a cache line.
template <class Op>
void ChangeInPieces(uint8_t* bytes, size_t count, const uint8_t* end, Op&& op) {
  constexpr size_t kLine = simd::kCacheLine, kAhead = simd::kFetchedAhead;
  // The first line at which a color begins: 3 * 43 is 1 more than two lines.
  const size_t head = 3 * ((0 - reinterpret_cast<uintptr_t>(bytes)) % kLine * 43 % kLine);
  for (size_t first = 0, last = head + kColorsPiece; first < count;
       first = last, last += kColorsPiece) {
    uint8_t* const piece = bytes + first;
    const size_t n = std::min(last, count) - first;
    const size_t left = static_cast<size_t>(end - piece);
    if (left > kAhead) ReadAhead<1>(piece + kAhead, std::min(n, left - kAhead));
    op(piece, n);
  }
}

// Applies op(bytes, count) to the first row_bytes of every `pitch` bytes of the pixel data, as
// often as there are rows but not beyond its end. Where nothing is left out, that is a single run.
template <class Op>
void ChangeRowBytes(const Dib& dib, size_t row_bytes, size_t pitch, Op&& op) {
  size_t rows = static_cast<size_t>(dib.pixel_rows());
  const size_t size = rows * dib.stride();
  if (row_bytes == pitch) {
    row_bytes = std::min(rows * row_bytes, size);
    rows = 1;
  }
  const bool fetches = size >= kCached && row_bytes > kColorsPiece;
  for (size_t y = 0, at = 0; y < rows && at < size; ++y, at += pitch) {
    uint8_t* const run = dib.rows() + at;
    const size_t count = std::min(row_bytes, size - at);
    if (fetches) {
      ChangeInPieces(run, count, dib.rows() + size, op);
    } else {
      op(run, count);
    }
  }
}

// Applies `op` to every pixel of a 24-bit image.
template <class Op>
void ChangePixelColors(const Dib& dib, Op&& op) {
  ChangeRowBytes(dib, 3 * static_cast<size_t>(dib.width()), dib.stride(),
                 [&](uint8_t* bytes, size_t count) { op(bytes, count / 3); });
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
  ChangeRowBytes(dib, 3 * width, 3 * width + dib.stride() - width * dib.bit_count() / 8, op);
}

}  // namespace ombrilo
