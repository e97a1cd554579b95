#include "tone/tone_curve.h"

#include <cstring>

#include "core/colors_in_place.h"
#include "rows/row_functions.h"
#include "tone/color_channel.h"

namespace ombrilo {

namespace {

constexpr bool IsLevel(int32_t value) { return value >= 0 && value <= 255; }

}  // namespace

bool AreCurvePoints(const OmbPoint* points, uint32_t count) {
  if (points == nullptr || count < 1 || count > 256) return false;
  for (uint32_t i = 0; i < count; ++i) {
    if (!IsLevel(points[i].x) || !IsLevel(points[i].y)) return false;
    if (i > 0 && points[i].x <= points[i - 1].x) return false;
  }
  return true;
}

uint32_t ApplyCurve(PackedDib* image, const uint8_t (&curve)[256], uint32_t channel) {
  const auto dib = Dib::Open(image);
  if (!dib || channel > 3) return 0;
  if (channel == 0 || (dib->indexed() && omb_iscolorful(image) == 0)) {
    const auto apply = simd::Active().apply_table;
    return ChangeColors(*dib, [&](uint8_t* bgr, size_t colors) { apply(bgr, 3 * colors, curve); });
  }
  uint8_t tables[3][256];
  for (auto& table : tables) {
    for (size_t v = 0; v < 256; ++v) table[v] = static_cast<uint8_t>(v);
  }
  std::memcpy(tables[ChannelByte(channel)], curve, sizeof curve);
  const auto apply = simd::Active().apply_channel_tables;
  return ChangeColors(*dib, [&](uint8_t* bgr, size_t colors) { apply(bgr, colors, tables[0]); });
}

}  // namespace ombrilo
