// omb_adjustghms: the very light and the very dark colors made lighter or darker.
#include <algorithm>

#include "core/colors_in_place.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

// Amounts beyond the channel range act like its ends.
int Amount(int32_t amount) { return std::clamp(amount, -255, 255); }

}  // namespace

}  // namespace ombrilo

uint32_t omb_adjustghms(PackedDib* image, int32_t highlights, int32_t shadows1, int32_t shadows2) {
  using namespace ombrilo;
  if (highlights == 0 && shadows1 == 0 && shadows2 == 0) return 0;
  const auto dib = Dib::Open(image);
  if (!dib) return 1;  // also for null
  const auto adjust = simd::Active().adjust_lights;
  const int lights = Amount(highlights), darks1 = Amount(shadows1), darks2 = Amount(shadows2);
  // Each color goes through all three steps at once, which depend on nothing but the color. Bytes
  // that do not fill a group of three stay.
  ChangeTableOrBytes(*dib, [=](uint8_t* bytes, size_t count) {
    adjust(bytes, count / 3, lights, darks1, darks2);
  });
  return 1;
}
