// omb_gray: an indexed image gets a gray color table, a 24-bit image becomes an 8-bit one with a
// ramp.
#include "core/color_table.h"
#include "core/colors_in_place.h"
#include "core/replacement.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

void MakeTableGray(const Dib& dib) {
  const simd::RowFunctions& rows = simd::Active();
  ChangeTableColors(dib, [&](uint8_t* bgr, size_t colors) {
    uint8_t gray[256];
    rows.gray_percent(bgr, colors, gray);
    rows.spread(gray, colors, bgr);
  });
}

bool ReplaceByGray(const DibView& source, PackedDib** image) {
  NewBlock block = NewBlock::Indexed(source, 8);
  if (!block) return false;
  const Dib gray = block.dib();
  const auto convert = simd::Active().gray_percent;
  ConvertRows(source, gray, convert);
  WriteGrayRamp(gray);
  return block.Replace(image);
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_gray(PackedDib** image) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image == nullptr ? nullptr : *image);
  if (!dib) return 0;
  if (dib->indexed()) {
    MakeTableGray(*dib);
    return 1;
  }
  return dib->bit_count() == 24 && ReplaceByGray(*dib, image);
}
