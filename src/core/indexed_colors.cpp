#include "core/indexed_colors.h"

#include <cstring>

#include "rows/row_functions.h"

namespace ombrilo {

void IndexedColors::Snapshot(const DibView& dib, bool split) {
  const Palette palette = *MakeDIBPalette(dib);
  const bool gray = !split && palette.AllGray();
  if (std::memcmp(&palette, &palette_, sizeof palette) == 0 && gray == gray_) return;
  palette_ = palette;
  gray_ = gray;
  nearest_.Learn(palette);
  identity_ = gray_ && palette.count == 256;
  if (!gray_) return;
  for (int i = 0; i < 256; ++i) {
    const auto level = static_cast<uint8_t>(i);
    level_of_[i] = palette.bgr[i][0];
    index_of_[i] = nearest_.Find(level, level, level);
    identity_ = identity_ && level_of_[i] == level && index_of_[i] == level;
  }
}

void IndexedColors::Decode(const uint8_t* indices, size_t pixels, uint8_t* values) const {
  if (gray_) {
    std::memcpy(values, indices, pixels);
    simd::Active().apply_table(values, pixels, level_of_);
  } else {
    simd::Active().expand_colors(indices, pixels, palette_.bgr[0], values);
  }
}

void IndexedColors::Encode(const uint8_t* values, size_t pixels, uint8_t* indices) {
  if (gray_) {
    std::memcpy(indices, values, pixels);
    simd::Active().apply_table(indices, pixels, index_of_);
  } else {
    nearest_.Find(values, 3, pixels, indices);
  }
}

}  // namespace ombrilo
