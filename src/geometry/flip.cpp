// omb_fliphor and omb_flipvert: mirror images, in place and without memory of their own.
#include "core/packed_dib.h"
#include "core/read_ahead.h"
#include "geometry/mirror.h"
#include "rows/row_functions.h"

uint32_t omb_fliphor(PackedDib* image) {
  const auto dib = ombrilo::Dib::Open(image);
  // Unlike omb_flipvert, which moves whole rows of any depth.
  if (!dib || (!dib->indexed() && dib->bit_count() != 24)) return 0;
  for (int32_t y = 0, last = dib->pixel_rows() - 1; y <= last; ++y) {
    ombrilo::MirrorRowInPlace(dib->row(y), dib->bit_count(), dib->width(),
                              y < last ? dib->row(y + 1) : nullptr);
  }
  return 1;
}

uint32_t omb_flipvert(PackedDib* image) {
  const auto dib = ombrilo::Dib::Open(image);
  if (!dib) return 0;
  const auto swap = ombrilo::simd::Active().swap_bytes;
  // Padding moves with its row.
  for (int32_t low = 0, high = dib->pixel_rows() - 1; low < high; ++low, --high) {
    // Processors foresee the rows that go up, not those that go down.
    if (high - low > 2) ombrilo::ReadAhead(dib->row(high - 1), dib->stride());
    swap(dib->row(low), dib->row(high), dib->stride());
  }
  return 1;
}
