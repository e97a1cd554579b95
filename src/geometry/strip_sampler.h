// Sampling for scaling: the pixels of a row of the new image all read the same rows of the source,
// and those of a column the same columns. Strips of columns are prepared once and serve all rows;
// what rows have in common is kept from one to the next.
#pragma once

#include <cstdint>

#include "core/buffer.h"
#include "geometry/sampler.h"
#include "rows/row_functions.h"

namespace ombrilo {

// A position on one axis of the source.
struct Position {
  int32_t whole;
  float fraction;
};

class StripSampler {
 public:
  // The most columns of a strip: whole bytes at any depth.
  static constexpr int32_t kMost = 6000;

  // Takes all memory for strips of up to `columns` columns, whose positions span up to `span`
  // columns of the source. `height` is the height of the new image.
  StripSampler(Sampler& sampler, int32_t columns, int32_t span, int32_t height);
  // False when memory ran out.
  explicit operator bool() const { return static_cast<bool>(memory_); }

  // Begins the strip of columns of the new image from x on, at these ascending positions, which
  // have to stay in memory.
  void Begin(int32_t x, const Position* columns, int32_t count);
  // Samples the strip's pixels of row y of the new image, at this position; rows come in order.
  // `next` is the position of the row after it.
  void Sample(Position position, Position next, int32_t y, uint8_t* row);

 private:
  void LayOut(int32_t aligned);
  void Point(Position position, Position next, uint8_t* row, uint8_t* to);
  // Copies pixels [first, first + count) of the strip to their places in `to`.
  void Pick(const simd::PixelPlaces& places, int32_t first, size_t count, uint8_t* to);
  void Bilinear(Position position, Position next, uint8_t* to);
  template <class F>
  void InPieces(Span pixels, int32_t low, int32_t source_rows, F&& f);
  const float* Pairs(int32_t source_row);
  void Bicubic(Position position, Position next, int32_t y, uint8_t* to);
  const uint8_t* Row(int32_t source_row);
  // Where the strip's pixels are in a source row. Only as many bytes count as readable as there are
  // from row `last` on.
  simd::PixelPlaces Places(int32_t source_row, int32_t last);

  Sampler& sampler_;
  const simd::RowFunctions& functions_;
  const Span inner_rows_;
  const bool enlarges_;  // bilinear: source rows are blended more than once
  const bool spreads_;   // the same of levels, if there is a plan
  const bool plans_;     // pixels may be picked by a plan
  const bool fetches_;   // of a large image, nearly all of whose cache lines are read
  const size_t plane_;   // from one array of the strip's values to the next
  const size_t decoded_size_;
  const size_t plan_bytes_;
  AlignedScratch memory_;

  int32_t* offset_;
  float* fraction_;
  float* weights_[4];
  float* spread_fraction_ = nullptr;
  float* pairs_[2];      // bilinear: of the source rows in summed_, then of right neighbours
  float* sums_[4];       // of the source rows in summed_, channel after channel
  uint8_t* decoded_[2];  // the source rows in decoded_row_
  uint8_t* sampled_;     // results that have to be encoded, or picked bytes

  // Of the current strip.
  int32_t x_ = 0, count_ = 0;
  const Position* columns_ = nullptr;
  Span source_columns_ = {0, 0};
  Span uncorrected_ = {0, 0};           // bicubic: pixels whose neighbours are all in the source
  int32_t decoded_row_[2], summed_[4];  // source rows; -1: none
  bool whole_ = false;                  // all columns are at whole pixels
  simd::PickPlan plan_ = {};
  bool planned_ = false;
  int32_t picked_ = -1;  // the source row that last_ was picked from
  const uint8_t* last_ = nullptr;
};

}  // namespace ombrilo
