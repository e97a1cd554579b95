// Colors of a color table, read and written as runs of blue, green, red bytes.
//
// A table may have fewer entries than the depth has indices, or announce more than the block holds.
// Entries past the table come from the bytes that follow it; bytes past the block count as 0 and
// are never written.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/packed_dib.h"

namespace ombrilo {

// Reads entries [first, first + count), 256 at most, as packed B,G,R: 3 * count bytes.
void ReadColors(const DibView& dib, uint32_t first, uint32_t count, uint8_t* bgr);

// Calls use(first, bgr, count) for the entries that the header announces, in runs of 256 at most.
template <class Use>
void ForEachTableRun(const DibView& dib, Use&& use) {
  constexpr uint32_t kRun = 256;
  const uint32_t entries = dib.header().table_count();
  uint8_t bgr[3 * kRun];
  for (uint32_t first = 0; first < entries; first += kRun) {
    const uint32_t count = std::min(kRun, entries - first);
    ReadColors(dib, first, count, bgr);
    use(first, bgr, count);
  }
}

// Writes entries [first, first + count), 256 at most, from packed B,G,R. The reserved byte of a
// four-byte entry keeps its value.
void WriteColors(const Dib& dib, uint32_t first, uint32_t count, const uint8_t* bgr);

// Writes the first `count` entries from a caller's table, whose colors are four bytes apart
// whatever the header is. The reserved byte becomes 0.
void WriteTable(const Dib& dib, uint32_t count, const uint8_t* table);

// Writes the 256 entries of an 8-bit gray image, from black to white.
void WriteGrayRamp(const Dib& dib);

// Reads `count` four-byte entries from byte 40 on, where an information header has them, whatever
// the header is. Some operations look colors up this way on purpose.
void ReadColorsAtByte40(const DibView& dib, uint32_t count, uint8_t* bgr);

}  // namespace ombrilo
