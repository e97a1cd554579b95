// omb_CreateDIBPalette: the color table as a logical palette.
//
// Unlike the palette that operations use (core/palette.h), it has as many entries as the header
// announces, at any depth.
#include "core/buffer.h"
#include "core/bytes.h"
#include "core/color_table.h"
#include "core/packed_dib.h"

#ifdef _WIN32
#include "core/gdi.h"
#endif

namespace ombrilo {

namespace {

// LOGPALETTE: version, number of entries, then red, green, blue and flags of each.
constexpr uint16_t kPaletteVersion = 0x300;
constexpr size_t kEntriesOffset = 4;

Buffer<uint8_t> NewLogicalPalette(const DibView& dib) {
  const uint16_t count = dib.header().table_count();
  // Four bytes more than the entries need, as callers have always been given.
  Buffer<uint8_t> palette = NewZeroedBuffer<uint8_t>(count * size_t{4} + 8);
  if (!palette) return palette;
  StoreU16(palette.get(), kPaletteVersion);
  StoreU16(palette.get() + 2, count);
  for (uint32_t i = 0; i < count; ++i) {
    uint8_t bgr[3];
    ReadColors(dib, i, 1, bgr);
    uint8_t* entry = palette.get() + kEntriesOffset + 4 * i;
    entry[0] = bgr[2];
    entry[1] = bgr[1];
    entry[2] = bgr[0];
  }
  return palette;
}

}  // namespace

}  // namespace ombrilo

uintptr_t omb_CreateDIBPalette(const PackedDib* image) {
  using namespace ombrilo;
  const auto dib = DibView::Open(image);
  if (!dib || dib->header().table_count() == 0) return 0;
  Buffer<uint8_t> palette = NewLogicalPalette(*dib);
  if (!palette) return 0;
#ifdef _WIN32
  return reinterpret_cast<uintptr_t>(gdi::CreatePalette(palette.get()));
#else
  return reinterpret_cast<uintptr_t>(palette.release());
#endif
}
