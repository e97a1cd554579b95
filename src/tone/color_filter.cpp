// omb_filtercolor: one channel cleared.
#include "core/colors_in_place.h"
#include "rows/row_functions.h"
#include "tone/color_channel.h"

uint32_t omb_filtercolor(PackedDib* image, uint32_t channel) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || !IsChannel(channel)) return 0;
  const auto clear = simd::Active().clear_channel;
  return ChangeColors(
      *dib, [=](uint8_t* bgr, size_t colors) { clear(bgr, colors, ChannelByte(channel)); });
}
