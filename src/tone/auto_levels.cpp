// omb_autolevel: each channel stretched between the levels of its own histogram.
//
// An indexed image is measured and changed in its color table: every entry counts once, however
// many pixels use it.
#include "core/colors_in_place.h"
#include "rows/row_functions.h"
#include "tone/levels.h"

uint32_t omb_autolevel(PackedDib* image, double low, double high) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib) return 0;
  Histogram channels[3];
  const bool counted = ChangeColors(*dib, [&](const uint8_t* bgr, size_t colors) {
    for (size_t c = 0; c < 3; ++c) channels[c].Add(bgr + c, colors, 3);
  });
  if (!counted) return 0;
  const int32_t samples = dib->indexed() ? dib->header().table_count() : PixelCount(dib->header());
  uint8_t tables[3][256];
  for (size_t c = 0; c < 3; ++c) {
    FindLevels(channels[c], samples, low, high, UpperTest::kAtMost).FillTable(tables[c]);
  }
  const auto apply = simd::Active().apply_channel_tables;
  return ChangeColors(*dib, [&](uint8_t* bgr, size_t colors) { apply(bgr, colors, tables[0]); });
}
