#include "steps/limits.h"

#include "errors.h"

namespace omb {

void CheckLevels(const PackedDib* dib) {
  if (omb_DIBBitCount(dib) == 8 && omb_iscolorful(dib) != 0) {
    throw StepError(
        "pixels of this image are indices into a table of colors; try neuquant=24 first");
  }
}

void CheckSides(const PackedDib* dib) {
  if (omb_DIBWidth(dib) > 65535 || omb_DIBHeight(dib) > 65535) {
    throw StepError("not possible on images of more than 65535 columns or rows");
  }
}

void CheckRows(const PackedDib* dib) {
  CheckSides(dib);
  constexpr uint32_t kLongestRow = 65532;
  const uint32_t width = omb_DIBWidth(dib);
  if (omb_DIBBitCount(dib) == 24 && width > kLongestRow / 3) {
    throw StepError("not possible on 24-bit images wider than 21844 pixels; try gray first");
  }
  if (width > kLongestRow) {
    throw StepError("not possible on images wider than 65532 pixels");
  }
}

}  // namespace omb
