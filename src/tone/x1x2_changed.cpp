// omb_x1x2_changed: the input levels set by two sliders under a histogram.
#include <algorithm>

#include "tone/tone_curve.h"

uint32_t omb_x1x2_changed(PackedDib* image, int32_t x1, int32_t x2, uint32_t channel) {
  using namespace ombrilo;
  if (x1 < 0 || x1 > 255 || x2 < 0 || x2 > 255) return 0;
  const int32_t low = std::min(x1, x2), high = std::max(x1, x2), width = high - low;
  uint8_t curve[256];
  for (int32_t v = 0; v < 256; ++v) {
    int32_t level = v < high ? 0 : 255;
    if (v > low && v < high) level = (510 * (v - low) + width) / (2 * width);
    curve[v] = static_cast<uint8_t>(x1 <= x2 ? level : 255 - level);
  }
  return ApplyCurve(image, curve, channel);
}
