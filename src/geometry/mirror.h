// Mirrored rows, as flips and half turns need them.
#pragma once

#include <cstdint>

namespace ombrilo {

// Stores the pixels of a row of 1, 4, 8 or 24 bits in reverse order on another row. Bits and bytes
// after the last pixel stay.
void MirrorRow(const uint8_t* from, uint16_t bit_count, int32_t width, uint8_t* to);

// The same in place. `next` is the row that will be next, or null.
void MirrorRowInPlace(uint8_t* row, uint16_t bit_count, int32_t width, const uint8_t* next);

}  // namespace ombrilo
