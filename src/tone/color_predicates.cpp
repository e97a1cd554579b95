// The questions a host asks before it offers an operation.
#include "core/color_table.h"
#include "core/packed_dib.h"

namespace ombrilo {

namespace {

// Only the table is looked at, never the pixels: an image without a table counts as colorful.
bool IsColorful(const DibView& dib) {
  bool colorful = dib.header().table_count() == 0;
  ForEachTableRun(dib, [&](uint32_t, const uint8_t* bgr, uint32_t count) {
    for (uint32_t i = 0; i < count && !colorful; ++i, bgr += 3) {
      colorful = bgr[0] != bgr[1] || bgr[1] != bgr[2];
    }
  });
  return colorful;
}

}  // namespace

}  // namespace ombrilo

int32_t omb_iscolorful(const PackedDib* image) {
  const auto dib = ombrilo::DibView::Open(image);
  return dib && ombrilo::IsColorful(*dib);
}

int32_t omb_can_gray(const PackedDib* image) { return omb_iscolorful(image); }

int32_t omb_can_pseudocolor(const PackedDib* image) {
  const auto dib = ombrilo::DibView::Open(image);
  return dib && !ombrilo::IsColorful(*dib);
}

int32_t omb_can_filtersheet(const PackedDib* image) {
  if (image == nullptr) return 0;
  const uint16_t bit_count = ombrilo::DibHeader::Read(image).bit_count;
  return bit_count == 8 || bit_count == 24;
}

int32_t omb_can_balance(const PackedDib* image) {
  if (image == nullptr) return 0;
  const uint16_t bit_count = ombrilo::DibHeader::Read(image).bit_count;
  return bit_count != 1 && bit_count != 4;
}

int32_t omb_autoclr(void) { return 1; }
