// Crossings: the levels at which the cumulative counts of a histogram exceed a number.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/packed_dib.h"
#include "tone/histogram.h"

namespace ombrilo {

// The first level whose cumulative count exceeds the number, 256 if none does; how many samples are
// below that level, and how many up to it.
struct Crossing {
  int level;
  int64_t below, up_to;
};

Crossing FindCrossing(const Histogram& histogram, double number);

// The crossings of a 24-bit image's three channels, or of its gray levels (see gray_double) as a
// single one. A histogram of every 17th row tells near which levels they are; counting how many
// levels are less than these, which takes a fraction of the time of a full histogram, proves it.
// Where it does not, and in small images, all rows are counted.
template <size_t kChannels>
class PixelCrossings {
 public:
  explicit PixelCrossings(const DibView& dib) : dib_(dib) {}

  // Of a number below 0 or not below the number of pixels, only the level.
  void Find(double number, Crossing (&found)[kChannels]);

 private:
  template <class Use>
  void ForEachRun(int32_t step, Use&& use) const;
  void Count(int32_t step);
  bool FindNearGuess(double number, Crossing (&found)[kChannels]) const;

  const DibView& dib_;
  const int64_t pixels_ = int64_t{dib_.width()} * dib_.pixel_rows();
  int32_t step_ = 0;  // the histograms count every so many rows
  Histogram histograms_[kChannels];
};

}  // namespace ombrilo
