// omb_brightnesscontrast: a brightness step, then a contrast step, each channel by itself.
#include <algorithm>

#include "core/colors_in_place.h"
#include "rows/row_functions.h"
#include "tone/level_table.h"

namespace ombrilo {

namespace {

// Contrast above 0 stretches [c, 255 - c] to [0, 255]. From 128 on the band is empty and the rest
// is a hard threshold.
uint8_t Stretched(int32_t value, int32_t contrast) {
  if (value <= contrast) return 0;
  if (value > 255 - contrast) return 255;
  return static_cast<uint8_t>((value - contrast) * 255 / (255 - 2 * contrast));
}

// Contrast below 0 compresses [0, 255] to [-c, 255 + c]. Below -127 the result wraps to its low 8
// bits, in 32-bit arithmetic, on purpose.
uint8_t Compressed(uint32_t value, int32_t contrast) {
  const uint32_t c = static_cast<uint32_t>(contrast);
  const int32_t product = static_cast<int32_t>(value * (255 + 2 * c));
  return static_cast<uint8_t>(static_cast<uint32_t>(product / 255) - c);
}

// Both steps as one line. Where the first one's limits matter there is none, which LevelTable sees.
LevelLine LineOf(int shift, int32_t contrast) {
  if (contrast < -127 || contrast > 127) return {};
  return contrast > 0 ? LevelLine{contrast - shift, 0, 255, 255 - 2 * contrast}
                      : LevelLine{-shift, -contrast, 255 + 2 * contrast, 255};
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_brightnesscontrast(PackedDib* image, int32_t brightness, int32_t contrast) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib) return 1;  // also for null: this operation reports nothing
  const int shift = std::clamp(brightness, -255, 255);
  if (contrast == 0) {
    if (shift == 0) return 1;
    const auto add = simd::Active().add_amount;
    ChangeColors(*dib, [=](uint8_t* bgr, size_t colors) { add(bgr, 3 * colors, shift); });
    return 1;
  }
  uint8_t table[256];
  for (int i = 0; i < 256; ++i) {
    const int value = std::clamp(i + shift, 0, 255);
    table[i] = contrast > 0 ? Stretched(value, contrast)
                            : Compressed(static_cast<uint32_t>(value), contrast);
  }
  const LevelTable levels(table, LineOf(shift, contrast));
  ChangeColors(*dib, [&](uint8_t* bgr, size_t colors) { levels.Apply(bgr, 3 * colors); });
  return 1;
}
