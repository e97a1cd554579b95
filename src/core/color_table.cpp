#include "core/color_table.h"

namespace ombrilo {

namespace {

size_t EntryOffset(const DibView& dib, uint32_t index) {
  return size_t{dib.header().header_size} + size_t{index} * dib.header().table_step();
}

}  // namespace

void ReadColors(const DibView& dib, uint32_t first, uint32_t count, uint8_t* bgr) {
  for (uint32_t i = 0; i < count; ++i) dib.Read(EntryOffset(dib, first + i), bgr + 3 * i, 3);
}

void ReadColorsAtByte40(const DibView& dib, uint32_t count, uint8_t* bgr) {
  for (uint32_t i = 0; i < count; ++i) {
    dib.Read(kInfoHeaderSize + size_t{4} * i, bgr + 3 * i, 3);
  }
}

void WriteColors(const Dib& dib, uint32_t first, uint32_t count, const uint8_t* bgr) {
  for (uint32_t i = 0; i < count; ++i) dib.Write(EntryOffset(dib, first + i), bgr + 3 * i, 3);
}

}  // namespace ombrilo
