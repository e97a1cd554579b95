// omb_setpalette and omb_setresolution.
#include "core/bytes.h"
#include "core/color_table.h"
#include "core/packed_dib.h"

uint32_t omb_setpalette(PackedDib* dib, const uint8_t* colors, uint32_t count) {
  using namespace ombrilo;
  const auto image = Dib::Open(dib);
  if (!image || colors == nullptr || count > image->header().table_count()) return 0;
  WriteTable(*image, count, colors);
  return 1;
}

uint32_t omb_setresolution(PackedDib* dib, int32_t x, int32_t y) {
  using namespace ombrilo;
  const auto image = Dib::Open(dib);
  if (!image || image->core() || x < 0 || y < 0) return 0;
  StoreU32(image->block() + kInfoXPelsPerMeter, static_cast<uint32_t>(x));
  StoreU32(image->block() + kInfoYPelsPerMeter, static_cast<uint32_t>(y));
  return 1;
}
