// Pixels of 16 and 32 bits: which bits hold blue, green and red.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/packed_dib.h"
#include "rows/row_functions.h"

namespace ombrilo {

class HighColor {
 public:
  // For an image of 16 or 32 bits.
  explicit HighColor(const DibView& source);

  // Converts pixels of a row to packed blue, green, red. A channel of fewer than 8 bits fills the
  // high bits of its byte.
  void ToBgr(const uint8_t* row, size_t pixels, uint8_t* bgr) const;

 private:
  size_t bytes_;  // of a pixel
  simd::ChannelBits bgr_[3];
};

}  // namespace ombrilo
