// omb_pseudocolor: the caller's color table in place of a gray one.
#include "core/packed_dib.h"

uint32_t omb_pseudocolor(PackedDib* image, const uint8_t* table) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || table == nullptr || omb_iscolorful(image) != 0) return 0;
  const uint32_t step = dib->header().table_step();
  for (uint32_t i = 0; i < dib->header().table_count(); ++i, table += 4) {
    // Four bytes apart in the caller's table, whatever the header; the reserved byte becomes 0.
    const uint8_t entry[4] = {table[0], table[1], table[2], 0};
    dib->Write(size_t{dib->header().header_size} + size_t{i} * step, entry, step);
  }
  return 1;
}
