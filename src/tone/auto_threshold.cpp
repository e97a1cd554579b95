// omb_autothreshold: the median gray level of an image's pixels.
#include "core/color_table.h"
#include "core/packed_dib.h"
#include "rows/row_functions.h"
#include "tone/crossing.h"
#include "tone/histogram.h"

namespace ombrilo {

namespace {

// Gray is 0.3 red + 0.59 green + 0.11 blue in double precision, truncated.
Crossing FindGrayCrossing(const DibView& dib, int32_t half) {
  if (!dib.indexed()) {
    Crossing crossing[1];
    PixelCrossings<1>(dib).Find(half, crossing);
    return crossing[0];
  }
  Histogram indices, levels;
  indices.AddIndices(dib, dib.pixel_rows());
  const uint32_t entries = ColorsOfDepth(dib.bit_count());
  uint8_t colors[256][3], gray[256];
  ReadColors(dib, 0, entries, colors[0]);
  simd::Active().gray_double(colors[0], entries, gray);
  for (uint32_t i = 0; i < entries; ++i) levels.AddTimes(gray[i], indices[i]);
  return FindCrossing(levels, half);
}

int32_t Median(const DibView& dib) {
  const int32_t half = PixelCount(dib.header()) / 2;
  const Crossing crossing = FindGrayCrossing(dib, half);
  // Level 0 never ends the search, even when half of the pixels are black: level 1 does, and the
  // comparison of the two then answers 0.
  if (crossing.level % 256 == 0) return 0;
  return half - crossing.below < crossing.up_to - half ? crossing.level - 1 : crossing.level;
}

}  // namespace

}  // namespace ombrilo

int32_t omb_autothreshold(const PackedDib* image) {
  using namespace ombrilo;
  const auto dib = DibView::Open(image);
  if (!dib || dib->pixel_rows() == 0 || !(dib->indexed() || dib->bit_count() == 24)) return 0;
  return Median(*dib);
}
