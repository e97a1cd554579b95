#include "core/high_color.h"

#include <bit>

namespace ombrilo {

namespace {

simd::ChannelBits BitsOf(uint32_t mask) {
  // An empty mask has a shift of -1, and one wider than 8 bits a shift of 8 - width below 0. Both
  // count modulo 32.
  return {mask, mask == 0 ? 31 : std::countr_zero(mask), (8 - std::popcount(mask)) & 31};
}

}  // namespace

HighColor::HighColor(const DibView& source) : bytes_(source.bit_count() / 8u) {
  uint32_t masks[3] = {0x001F, 0x03E0, 0x7C00};
  if (source.ReadU32(kInfoCompression) == kBitfields) {
    for (size_t c = 0; c < 3; ++c) masks[c] = source.ReadU32(kInfoHeaderSize + 8 - 4 * c);
  } else if (source.bit_count() == 32) {
    for (size_t c = 0; c < 3; ++c) masks[c] = 0xFFu << 8 * c;
  }
  for (size_t c = 0; c < 3; ++c) bgr_[c] = BitsOf(masks[c]);
}

void HighColor::ToBgr(const uint8_t* row, size_t pixels, uint8_t* bgr) const {
  const bool whole_bytes =
      bgr_[0].mask == 0xFF && bgr_[1].mask == 0xFF00 && bgr_[2].mask == 0xFF0000;
  if (bytes_ == 4 && whole_bytes) {
    simd::Active().drop_fourth_byte(row, pixels, bgr);
  } else {
    simd::Active().pick_channels(row, bytes_, pixels, bgr_, bgr);
  }
}

}  // namespace ombrilo
