// Colors of a color table, read and written as runs of blue, green, red bytes.
//
// A table may be shorter than the depth's indices reach, or be announced longer than the block is.
// Entries past the table come from the bytes that follow it; bytes past the block count as 0 and
// are never written.
#pragma once

#include <cstdint>

#include "core/packed_dib.h"

namespace ombrilo {

// Reads entries [first, first + count) as packed B,G,R: 3 * count bytes.
void ReadColors(const DibView& dib, uint32_t first, uint32_t count, uint8_t* bgr);

// Writes entries [first, first + count) from packed B,G,R. The reserved byte of a four-byte entry
// keeps its value.
void WriteColors(const Dib& dib, uint32_t first, uint32_t count, const uint8_t* bgr);

// The 256 entries of an 8-bit gray image: from black to white.
void WriteGrayRamp(const Dib& dib);

// Reads entries [0, count) as four-byte ones that start at byte 40, as behind an information
// header, whatever the header is. Some operations look colors up like this on purpose.
void ReadColorsAtByte40(const DibView& dib, uint32_t count, uint8_t* bgr);

}  // namespace ombrilo
