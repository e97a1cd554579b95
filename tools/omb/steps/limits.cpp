#include "steps/limits.h"

#include "errors.h"

namespace omb {

void CheckLevels(const PackedDib* dib) {
  if (omb_DIBBitCount(dib) != 8) return;
  if (omb_iscolorful(dib) != 0) {
    throw StepError(
        "the image is colorful, and at 8 bits its bytes are not colors; try truecolor first");
  }
  const uint32_t count = omb_DIBNumColors(dib);
  const uint32_t step = count == 0 ? 0 : static_cast<uint32_t>(omb_PaletteSize(dib)) / count;
  const uint8_t* entry = omb_FindDIBBits(dib) - omb_PaletteSize(dib);
  for (uint32_t i = 0; i < count; ++i, entry += step) {
    if (*entry != i) {
      throw StepError(
          "its bytes are not gray levels from black to white; try truecolor, then gray");
    }
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
