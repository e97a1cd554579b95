// omb_autothreshold: the median gray level of an image's pixels.
#include <algorithm>

#include "core/color_table.h"
#include "core/packed_dib.h"
#include "core/pixels.h"
#include "rows/row_functions.h"
#include "tone/histogram.h"

namespace ombrilo {

namespace {

// Gray is 0.3 red + 0.59 green + 0.11 blue in double precision, truncated.
Histogram GrayLevels(const DibView& dib) {
  const auto convert = simd::Active().gray_double;
  Histogram levels;
  if (dib.indexed()) {
    Histogram indices;
    indices.AddIndices(dib, dib.pixel_rows());
    const uint32_t entries = ColorsOfDepth(dib.bit_count());
    uint8_t colors[256][3], gray[256];
    ReadColors(dib, 0, entries, colors[0]);
    convert(colors[0], entries, gray);
    for (uint32_t i = 0; i < entries; ++i) levels.AddTimes(gray[i], indices[i]);
    return levels;
  }
  for (int32_t y = 0; y < dib.pixel_rows(); ++y) {
    const size_t width = static_cast<size_t>(dib.width());
    uint8_t gray[kRun];
    for (size_t x = 0; x < width; x += kRun) {
      const size_t count = std::min(kRun, width - x);
      convert(dib.row(y) + 3 * x, count, gray);
      levels.Add(gray, count);
    }
  }
  return levels;
}

int32_t Median(const Histogram& levels, int64_t half) {
  int64_t below = levels[0];
  // Level 0 never ends the search, even when half of the pixels are black; the comparison of the
  // two neighbours can still answer 0.
  for (int32_t i = 1; i < 256; ++i) {
    const int64_t up_to = below + levels[static_cast<size_t>(i)];
    if (up_to > half) return half - below < up_to - half ? i - 1 : i;
    below = up_to;
  }
  return 0;
}

}  // namespace

}  // namespace ombrilo

int32_t omb_autothreshold(const PackedDib* image) {
  using namespace ombrilo;
  const auto dib = DibView::Open(image);
  if (!dib || dib->pixel_rows() == 0 || !(dib->indexed() || dib->bit_count() == 24)) return 0;
  return Median(GrayLevels(*dib), PixelCount(dib->header()) / 2);
}
