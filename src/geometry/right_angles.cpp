// A half turn mirrors each row. A quarter turn is a transposition with the rows or the columns in
// reverse order. It goes tile by tile, so that the cache lines a tile touches on both sides stay in
// the cache.
#include "geometry/right_angles.h"

#include <algorithm>

#include "core/read_ahead.h"
#include "core/replacement.h"
#include "geometry/mirror.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

// Tiles are whole vectors of pixels on both sides, so that they start at whole bytes and the row
// functions need no smaller squares inside; their rows take up to nine cache lines. While a tile is
// turned, a few columns at a time, the next one is fetched.
void Transpose(const simd::Transposition& t, uint16_t bit_count, int32_t columns, int32_t pixels) {
  const int32_t columns_at_once = std::min(512, 384 * 8 / bit_count);
  const int32_t pixels_at_once = bit_count == 24 ? 192 : 384;
  const auto source = [&](int32_t c, int32_t i) {
    return t.from + i * t.from_step + int64_t{c} * bit_count / 8;
  };
  // Some rows of the tile that begins there; the columns of a part are whole vectors, too.
  constexpr int32_t kParts = 4;
  const auto fetch = [&](int32_t c, int32_t i, int32_t k) {
    const auto bytes = static_cast<size_t>(std::min(columns_at_once, columns - c)) * bit_count / 8;
    const int32_t rows = std::min(pixels_at_once, pixels - i);
    for (int32_t y = rows * k / kParts; y < rows * (k + 1) / kParts; ++y) {
      ReadAhead(source(c, i + y), bytes);
    }
  };
  for (int32_t k = 0; k < kParts; ++k) fetch(0, 0, k);
  for (int32_t c = 0; c < columns; c += std::min(columns_at_once, columns - c)) {
    const int32_t end = c + std::min(columns_at_once, columns - c);
    for (int32_t i = 0, height; i < pixels; i += height) {
      height = std::min(pixels_at_once, pixels - i);
      const bool below = i + height < pixels;
      const int32_t step = columns_at_once / kParts;
      for (int32_t k = 0, at = c, width; k < kParts; ++k, at += width) {
        if (below || end < columns) fetch(below ? c : end, below ? i + height : 0, k);
        // A few columns by themselves would not be whole vectors.
        width = end - at < step + step / 4 ? end - at : step;
        if (width == 0) continue;
        const simd::Transposition part = {source(at, i), t.from_step,
                                          t.to + at * t.to_step + int64_t{i} * bit_count / 8,
                                          t.to_step};
        simd::Active().transpose(part, bit_count, static_cast<size_t>(width),
                                 static_cast<size_t>(height));
      }
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
    const simd::Transposition t =
        quarters == 1
            ? simd::Transposition{source.row(0), from_step, turned.row(width - 1), -to_step}
            : simd::Transposition{source.row(height - 1), -from_step, turned.row(0), to_step};
    Transpose(t, source.bit_count(), width, height);
  }
  return block.Replace(image);
}

}  // namespace ombrilo
