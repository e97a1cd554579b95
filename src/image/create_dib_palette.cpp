// omb_CreateDIBPalette: the color table as a logical palette.
//
// Unlike the palette that operations use (core/palette.h), it has as many entries as the header
// announces, at any depth.
#include "core/color_table.h"
#include "core/logical_palette.h"
#include "core/packed_dib.h"

#ifdef _WIN32
#include "core/gdi.h"
#endif

namespace ombrilo {

namespace {

Buffer<uint8_t> LogicalPaletteOf(const DibView& dib) {
  Buffer<uint8_t> palette = NewLogicalPalette(dib.header().table_count());
  if (!palette) return palette;
  uint8_t* entry = palette.get() + kLogicalPaletteEntries;
  ForEachTableRun(dib, [&](uint32_t, const uint8_t* bgr, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i, bgr += 3, entry += 4) {
      entry[0] = bgr[2];
      entry[1] = bgr[1];
      entry[2] = bgr[0];
    }
  });
  return palette;
}

}  // namespace

}  // namespace ombrilo

uintptr_t omb_CreateDIBPalette(const PackedDib* image) {
  using namespace ombrilo;
  const auto dib = DibView::Open(image);
  if (!dib || dib->header().table_count() == 0) return 0;
  Buffer<uint8_t> palette = LogicalPaletteOf(*dib);
  if (!palette) return 0;
#ifdef _WIN32
  return reinterpret_cast<uintptr_t>(gdi::CreatePalette(palette.get()));
#else
  return reinterpret_cast<uintptr_t>(palette.release());
#endif
}
