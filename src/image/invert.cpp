// omb_invert: photographic negative.
#include "core/colors_in_place.h"
#include "rows/row_functions.h"

uint32_t omb_invert(PackedDib* image) {
  const auto dib = ombrilo::Dib::Open(image);
  if (!dib) return 0;
  const auto invert = ombrilo::simd::Active().invert;
  return ombrilo::ChangeColors(*dib, [=](uint8_t* bgr, size_t colors) { invert(bgr, 3 * colors); });
}
