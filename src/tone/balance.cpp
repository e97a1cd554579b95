// omb_balance: color balance of shadows, midtones, highlights or all levels.
#include <algorithm>
#include <cstdlib>

#include "core/colors_in_place.h"
#include "core/nearest_entry.h"
#include "core/palette.h"
#include "core/pixels.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr bool IsAmount(int32_t percent) { return percent >= -100 && percent <= 100; }

// How much of an amount applies to a level, out of 255.
int32_t WeightOf(int32_t level, uint32_t range) {
  const int32_t from_middle = 2 * level - 255;
  switch (range) {
    case OMB_BALANCE_SHADOWS:
      return std::max(-from_middle, 0);
    case OMB_BALANCE_MIDTONES:
      return 255 - std::abs(from_middle);
    case OMB_BALANCE_HIGHLIGHTS:
      return std::max(from_middle, 0);
    default:
      return 255;
  }
}

class Balance {
 public:
  // The amounts of blue, green and red.
  Balance(const int32_t (&bgr)[3], uint32_t range, bool keep_light) : keep_light_(keep_light) {
    for (size_t c = 0; c < 3; ++c) {
      for (int32_t v = 0; v < 256; ++v) {
        const int32_t moved = v + bgr[c] * WeightOf(v, range) / 255;
        tables_[c][v] = static_cast<uint8_t>(std::clamp(moved, 0, 255));
      }
    }
  }

  void Change(uint8_t* bgr, size_t colors) const {
    const simd::RowFunctions& rows = simd::Active();
    if (!keep_light_) return rows.apply_channel_tables(bgr, colors, tables_[0]);
    alignas(simd::kCacheLine) uint8_t luminance[kRun];
    for (; colors != 0; bgr += 3 * std::min(colors, kRun), colors -= std::min(colors, kRun)) {
      const size_t count = std::min(colors, kRun);
      rows.luminance(bgr, count, luminance);
      rows.apply_channel_tables(bgr, count, tables_[0]);
      rows.give_luminance(bgr, count, luminance);
    }
  }

 private:
  bool keep_light_;
  uint8_t tables_[3][256];
};

// Every index goes to the entry nearest to its balanced color; the table stays.
bool ChangeIndices(const Dib& dib, const Balance& balance) {
  const Palette palette = *MakeDIBPalette(dib);
  NearestEntry nearest(palette, static_cast<uint64_t>(palette.count));
  if (!nearest) return false;
  Palette balanced = palette;
  balance.Change(balanced.bgr[0], 256);
  uint8_t table[256];
  nearest.Find(balanced.bgr[0], 3, 256, table);
  const auto apply = simd::Active().apply_table;
  for (int32_t y = 0; y < dib.pixel_rows(); ++y) {
    apply(dib.row(y), static_cast<size_t>(dib.width()), table);
  }
  return true;
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_balance(PackedDib* image, int32_t red, int32_t green, int32_t blue, uint32_t range,
                     uint32_t keepLight) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || !IsAmount(red) || !IsAmount(green) || !IsAmount(blue)) return 0;
  if (range > OMB_BALANCE_ALL) return 0;
  if (dib->bit_count() != 8 && dib->bit_count() != 24) return 0;
  if (red == 0 && green == 0 && blue == 0) return 1;
  const Balance balance({blue, green, red}, range, keepLight != 0);
  if (dib->bit_count() == 8) return ChangeIndices(*dib, balance);
  ChangePixelColors(*dib, [&](uint8_t* bgr, size_t colors) { balance.Change(bgr, colors); });
  return 1;
}
