// A channel of pixels of 16 or 32 bits, which a mask selects.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

namespace omb {

// The bits of a mask in a pixel, as a number from 0 to 255.
class Channel {
 public:
  explicit Channel(uint32_t mask)
      : mask_(mask),
        shift_(mask == 0 ? 0 : std::countr_zero(mask)),
        maximum_(static_cast<uint32_t>((uint64_t{1} << std::popcount(mask)) - 1)),
        contiguous_(mask >> shift_ == maximum_) {
    for (uint32_t v = 0; v <= std::min<uint32_t>(maximum_, 255); ++v) scaled_[v] = Scale(v);
  }

  uint32_t mask() const { return mask_; }
  // The library keeps such channels as they are.
  bool fits_byte() const { return contiguous_ && maximum_ <= 255; }

  uint8_t Of(uint32_t pixel) const {
    const uint32_t value = contiguous_ ? (pixel & mask_) >> shift_ : Gather(pixel);
    return maximum_ <= 255 ? scaled_[value] : Scale(value);
  }

 private:
  uint8_t Scale(uint32_t value) const {
    if (maximum_ == 0) return 0;
    return static_cast<uint8_t>((uint64_t{value} * 255 + maximum_ / 2) / maximum_);
  }

  uint32_t Gather(uint32_t pixel) const {
    uint32_t value = 0;
    int to = 0;
    for (uint32_t rest = mask_; rest != 0; rest &= rest - 1) {
      value |= (pixel >> std::countr_zero(rest) & 1) << to++;
    }
    return value;
  }

  uint32_t mask_;
  int shift_;
  uint32_t maximum_;
  bool contiguous_;
  uint8_t scaled_[256] = {};
};

}  // namespace omb
