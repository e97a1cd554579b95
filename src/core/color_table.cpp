#include "core/color_table.h"

#include <cstring>

#include "rows/row_functions.h"

namespace ombrilo {

namespace {

size_t EntryOffset(const DibView& dib, uint32_t index) {
  return size_t{dib.header().header_size} + size_t{index} * dib.header().table_step();
}

// Reads `count` entries of `step` bytes, 256 at most.
void ReadEntries(const DibView& dib, size_t offset, size_t step, uint32_t count, uint8_t* bgr) {
  if (step == 3) return dib.Read(offset, bgr, size_t{3} * count);
  uint8_t entries[4 * 256];
  dib.Read(offset, entries, size_t{4} * count);
  simd::Active().drop_fourth_byte(entries, count, bgr);
}

}  // namespace

void ReadColors(const DibView& dib, uint32_t first, uint32_t count, uint8_t* bgr) {
  ReadEntries(dib, EntryOffset(dib, first), dib.header().table_step(), count, bgr);
}

void ReadColorsAtByte40(const DibView& dib, uint32_t count, uint8_t* bgr) {
  ReadEntries(dib, kInfoHeaderSize, 4, count, bgr);
}

void WriteColors(const Dib& dib, uint32_t first, uint32_t count, const uint8_t* bgr) {
  const size_t step = dib.header().table_step();
  uint8_t entries[4 * 256];
  dib.Read(EntryOffset(dib, first), entries, step * count);
  for (uint32_t i = 0; i < count; ++i) std::memcpy(entries + step * i, bgr + 3 * i, 3);
  dib.Write(EntryOffset(dib, first), entries, step * count);
}

void WriteTable(const Dib& dib, uint32_t count, const uint8_t* table) {
  for (uint32_t i = 0; i < count; ++i, table += 4) {
    const uint8_t entry[4] = {table[0], table[1], table[2], 0};
    dib.Write(EntryOffset(dib, i), entry, dib.header().table_step());
  }
}

void WriteGrayRamp(const Dib& dib) {
  uint8_t ramp[256][3];
  for (int i = 0; i < 256; ++i) ramp[i][0] = ramp[i][1] = ramp[i][2] = static_cast<uint8_t>(i);
  WriteColors(dib, 0, 256, ramp[0]);
}

}  // namespace ombrilo
