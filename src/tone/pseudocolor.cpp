// omb_pseudocolor: the caller's color table in place of a gray one.
#include "core/color_table.h"

uint32_t omb_pseudocolor(PackedDib* image, const uint8_t* table) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || table == nullptr || omb_iscolorful(image) != 0) return 0;
  WriteTable(*dib, dib->header().table_count(), table);
  return 1;
}
