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
  Levels levels[3];
  if (dib->indexed()) {
    Histogram channels[3];
    ChangeTableColors(*dib, [&](const uint8_t* bgr, size_t colors) {
      for (size_t c = 0; c < 3; ++c) channels[c].Add(bgr + c, colors, 3);
    });
    for (size_t c = 0; c < 3; ++c) {
      levels[c] =
          FindLevels(channels[c], dib->header().table_count(), low, high, UpperTest::kAtMost);
    }
  } else if (dib->bit_count() == 24) {
    FindLevels(*dib, low, high, levels);
  } else {
    return 0;
  }
  uint8_t tables[3][256];
  for (size_t c = 0; c < 3; ++c) levels[c].FillTable(tables[c]);
  const auto apply = simd::Active().apply_channel_tables;
  return ChangeColors(*dib, [&](uint8_t* bgr, size_t colors) { apply(bgr, colors, tables[0]); });
}
