// omb_extractcolor: one channel kept. An indexed image keeps it in its color table; a 24-bit image
// becomes an 8-bit one with the channel's values as indices and a one-channel ramp.
#include "core/color_table.h"
#include "core/colors_in_place.h"
#include "core/replacement.h"
#include "rows/row_functions.h"
#include "tone/color_channel.h"

namespace ombrilo {

namespace {

void KeepInTable(const Dib& dib, size_t kept) {
  const auto clear = simd::Active().clear_channel;
  ChangeTableColors(dib, [=](uint8_t* bgr, size_t colors) {
    clear(bgr, colors, (kept + 1) % 3);
    clear(bgr, colors, (kept + 2) % 3);
  });
}

bool ReplaceByChannel(const DibView& source, size_t kept, PackedDib** image) {
  NewBlock block = NewBlock::Indexed(source, 8);
  if (!block) return false;
  const Dib channel = block.dib();
  const auto extract = simd::Active().extract_channel;
  ConvertRows(source, channel, [=](const uint8_t* from, size_t pixels, uint8_t* to) {
    extract(from, pixels, kept, to);
  });
  uint8_t ramp[256][3] = {};
  for (int i = 0; i < 256; ++i) ramp[i][kept] = static_cast<uint8_t>(i);
  WriteColors(channel, 0, 256, ramp[0]);
  return block.Replace(image);
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_extractcolor(PackedDib** image, uint32_t channel) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image == nullptr ? nullptr : *image);
  if (!dib || !IsChannel(channel)) return 0;
  if (dib->indexed()) {
    KeepInTable(*dib, ChannelByte(channel));
    return 1;
  }
  // 0 although the image has been replaced: callers see the change by the new bit count.
  if (dib->bit_count() == 24) ReplaceByChannel(*dib, ChannelByte(channel), image);
  return 0;
}
