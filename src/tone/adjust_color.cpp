// omb_adjustcolor: colors changed by channel, or by hue, saturation and intensity or lightness.
#include <algorithm>

#include "core/colors_in_place.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr bool IsWithin(int32_t value, int32_t low, int32_t high) {
  return value >= low && value <= high;
}

bool AreInRange(uint32_t mode, int32_t a, int32_t b, int32_t c) {
  switch (mode) {
    case OMB_ADJUST_OFFSETS:
      return IsWithin(a, -255, 255) && IsWithin(b, -255, 255) && IsWithin(c, -255, 255);
    case OMB_ADJUST_GAINS:
      return IsWithin(a, -100, 900) && IsWithin(b, -100, 900) && IsWithin(c, -100, 900);
    case OMB_ADJUST_HSI:
    case OMB_ADJUST_HSL:
      return IsWithin(a, -360, 360) && IsWithin(b, -100, 100) && IsWithin(c, -100, 100);
    default:
      return false;
  }
}

void FillTable(uint32_t mode, int32_t amount, uint8_t (&table)[256]) {
  for (int32_t v = 0; v < 256; ++v) {
    const int32_t changed = mode == OMB_ADJUST_OFFSETS ? v + amount : v * (100 + amount) / 100;
    table[v] = static_cast<uint8_t>(std::clamp(changed, 0, 255));
  }
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_adjustcolor(PackedDib* image, uint32_t mode, int32_t a, int32_t b, int32_t c) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || !AreInRange(mode, a, b, c)) return 0;
  const simd::RowFunctions& rows = simd::Active();
  if (a == 0 && b == 0 && c == 0) return ChangeColors(*dib, [](uint8_t*, size_t) {});
  if (mode == OMB_ADJUST_HSI || mode == OMB_ADJUST_HSL) {
    const auto change = mode == OMB_ADJUST_HSI ? rows.change_hsi : rows.change_hsl;
    return ChangeColors(*dib, [=](uint8_t* bgr, size_t colors) { change(bgr, colors, a, b, c); });
  }
  uint8_t tables[3][256];
  FillTable(mode, c, tables[0]);
  FillTable(mode, b, tables[1]);
  FillTable(mode, a, tables[2]);
  return ChangeColors(*dib, [&](uint8_t* bgr, size_t colors) {
    rows.apply_channel_tables(bgr, colors, tables[0]);
  });
}
