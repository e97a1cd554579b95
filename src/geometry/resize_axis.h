// One axis of a resized image: which source pixels a new pixel is made of, and with what weights.
//
// The convolution-based resampling of D. Schumacher ("General filtered image rescaling", Graphics
// Gems III, 1992): a filter of some radius is centered on the new pixel in the source. Where the
// image shrinks, the filter is stretched by the same factor, so that every source pixel counts.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/buffer.h"
#include "ombrilo/ombrilo.h"
#include "rows/row_functions.h"

namespace ombrilo {

class ResizeAxis {
 public:
  // `from` pixels become `to` ones; both are 1 or more. Takes its memory at once.
  ResizeAxis(int32_t from, int32_t to, OmbResizeFilter filter);
  explicit operator bool() const { return values_ != nullptr; }

  int32_t from() const { return from_; }
  int32_t to() const { return to_; }
  bool changes() const { return from_ != to_; }
  // The most source pixels that a new pixel is made of.
  size_t most_taps() const { return most_taps_; }

  struct Taps {
    int32_t first, count;
  };
  // The source pixels of new pixel i, and their weights in (count + 1) / 2 pairs.
  Taps Find(int32_t i, simd::TapPair* pairs);

 private:
  int32_t from_, to_;
  OmbResizeFilter filter_;
  double step_;     // source pixels per new pixel
  double stretch_;  // of the filter
  double reach_;    // of the stretched filter
  size_t most_taps_;
  Buffer<double> values_;  // of the filter, at the taps of one new pixel
};

}  // namespace ombrilo
