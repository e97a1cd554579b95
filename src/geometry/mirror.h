// Mirrored rows, as flips and half turns need them.
#pragma once

#include <cstdint>

namespace ombrilo {

// Reverses the pixels of a row of 1, 4, 8 or 24 bits in place. Bits and bytes behind the last pixel
// stay.
void MirrorRow(uint8_t* row, uint16_t bit_count, int32_t width);

}  // namespace ombrilo
