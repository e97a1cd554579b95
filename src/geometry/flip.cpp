// omb_fliphor and omb_flipvert: mirror images, in place and without memory of their own.
#include <algorithm>
#include <cstring>

#include "core/packed_dib.h"
#include "geometry/mirror.h"

namespace ombrilo {

namespace {

void SwapBytes(uint8_t* a, uint8_t* b, size_t count) {
  uint8_t chunk[4096];
  while (count != 0) {
    const size_t n = std::min(sizeof chunk, count);
    std::memcpy(chunk, a, n);
    std::memcpy(a, b, n);
    std::memcpy(b, chunk, n);
    a += n;
    b += n;
    count -= n;
  }
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_fliphor(PackedDib* image) {
  const auto dib = ombrilo::Dib::Open(image);
  // Unlike omb_flipvert, which moves whole rows of any depth.
  if (!dib || (!dib->indexed() && dib->bit_count() != 24)) return 0;
  for (int32_t y = 0; y < dib->pixel_rows(); ++y) {
    ombrilo::MirrorRow(dib->row(y), dib->bit_count(), dib->width());
  }
  return 1;
}

uint32_t omb_flipvert(PackedDib* image) {
  const auto dib = ombrilo::Dib::Open(image);
  if (!dib) return 0;
  // Padding moves with its row.
  for (int32_t low = 0, high = dib->pixel_rows() - 1; low < high; ++low, --high) {
    ombrilo::SwapBytes(dib->row(low), dib->row(high), dib->stride());
  }
  return 1;
}
