// omb_setpalette and omb_setresolution.
#include <cstring>

#include "core/bytes.h"
#include "core/packed_dib.h"

uint32_t omb_setpalette(PackedDib* dib, const uint8_t* colors, uint32_t count) {
  using namespace ombrilo;
  const auto image = Dib::Open(dib);
  if (!image || colors == nullptr || count > image->header().table_count()) return 0;
  const size_t step = image->header().table_step();
  const size_t first = image->header().header_size;
  for (uint32_t i = 0; i < count; ++i) {
    const uint8_t entry[] = {colors[4 * i], colors[4 * i + 1], colors[4 * i + 2], 0};
    image->Write(first + i * step, entry, step);
  }
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
