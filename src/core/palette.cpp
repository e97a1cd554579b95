#include "core/palette.h"

#include "core/color_table.h"

namespace ombrilo {

bool Palette::AllGray() const {
  for (int i = 0; i < count; ++i) {
    if (bgr[i][0] != bgr[i][1] || bgr[i][1] != bgr[i][2]) return false;
  }
  return true;
}

std::optional<Palette> MakeDIBPalette(const DibView& dib) {
  if (!dib.indexed()) return std::nullopt;
  Palette palette = {};
  palette.count = static_cast<int>(ColorsOfDepth(dib.bit_count()));
  ReadColors(dib, 0, static_cast<uint32_t>(palette.count), palette.bgr[0]);
  return palette;
}

bool TableHoldsPalette(const DibView& dib) {
  return dib.header().table_size() >= ColorsOfDepth(dib.bit_count()) * dib.header().table_step();
}

}  // namespace ombrilo
