// Sampling for rotation: every pixel of the new image has a position of its own. The image is made
// tile by tile, in runs along the rows of a tile. The part of the source that a tile reads is
// small: it stays in the cache, and is decoded once where pixels are not sampled in place.
#pragma once

#include <cstdint>

#include "core/buffer.h"
#include "geometry/sampler.h"
#include "rows/row_functions.h"

namespace ombrilo {

class TileSampler {
 public:
  static constexpr int32_t kSide = 128;  // of a tile
  // The most that the positions of a tile span on an axis, at any angle.
  static constexpr int32_t kSpan = 184;

  // The positions of a run, on both axes.
  struct Positions {
    static constexpr int32_t kRoom = kSide + simd::kRunPadding;
    alignas(64) int32_t column[kRoom];
    alignas(64) int32_t row[kRoom];
    alignas(64) float dx[kRoom];
    alignas(64) float dy[kRoom];
  };

  // `columns_ahead` and `rows_ahead` lead from a pixel's position to that of a pixel in a later
  // row. The source there is prefetched, as processors foresee no accesses that go down the rows.
  TileSampler(Sampler& sampler, int32_t columns_ahead, int32_t rows_ahead);
  // False when memory ran out.
  explicit operator bool() const { return static_cast<bool>(memory_); }

  // Begins a tile whose positions, as far as they are in the source, are in these columns and rows:
  // kSpan of each at most.
  void Begin(Span columns, Span rows);
  // Samples pixels of row y of the new image from column x on.
  void Sample(const Positions& at, int32_t x, int32_t y, int32_t count, uint8_t* row);

 private:
  struct Work;
  void ReadAhead(size_t count) const;
  void Bicubic(const Positions& at, bool inside, int32_t x, int32_t y, int32_t count, uint8_t* to);

  Sampler& sampler_;
  const simd::RowFunctions& functions_;
  const Span columns_, rows_;  // where the source can be sampled
  const int32_t decoded_rows_, decoded_pitch_;
  AlignedScratch memory_;
  Work* const work_;
  uint8_t* const decoded_;  // what the tile reads, unless that is done in place
  simd::PixelPlaces places_;
  simd::SampledArea area_;
  ptrdiff_t ahead_;  // in bytes
};

}  // namespace ombrilo
