// omb_neuquant: colors mapped to a learned palette.
#include <algorithm>

#include "core/palette.h"
#include "core/pixels.h"
#include "core/replacement.h"
#include "quantize/palette_network.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

void ExpandTo24Bits(const DibView& source, const Dib& copy) {
  const Palette palette = *MakeDIBPalette(source);
  const auto expand = simd::Active().expand_colors;
  for (int32_t y = 0; y < source.pixel_rows(); ++y) {
    uint8_t* to = copy.row(y);
    ForEachIndexRun(source.row(y), source.bit_count(), static_cast<size_t>(source.width()),
                    [&](size_t first, const uint8_t* indices, size_t count) {
                      expand(indices, count, palette.bgr[0], to + 3 * first);
                    });
  }
}

void MapPixels(const DibView& source, PaletteNetwork& network, uint16_t bit_count, uint8_t* to) {
  uint8_t indices[kRun];
  const size_t width = static_cast<size_t>(source.width());
  const auto stride = static_cast<size_t>(StrideOf(source.width(), bit_count));
  for (int32_t y = 0; y < source.pixel_rows(); ++y, to += stride) {
    const uint8_t* bgr = source.row(y);
    for (size_t first = 0; first < width; first += kRun) {
      const size_t count = std::min(kRun, width - first);
      network.Find(bgr + 3 * first, 3, count, indices);
      PackIndices(indices, bit_count, count, to + first * bit_count / 8);
    }
  }
}

}  // namespace

}  // namespace ombrilo

int32_t omb_neuquant(PackedDib** image, int32_t bits) {
  using namespace ombrilo;
  auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source || source->bit_count() == bits) return 0;
  if (source->indexed()) {
    NewBlock block = NewBlock::WithDepth(*source, 24, 0, 0);
    if (!block) return 0;
    const Dib copy = block.dib();
    ExpandTo24Bits(*source, copy);
    // From here on the caller has the 24-bit copy, also when a later step fails. It is read by the
    // header that it was made with: rows over the header may have changed that.
    if (!block.Replace(image)) return 0;
    source = copy.At(*image);
  } else if (source->bit_count() != 24) {
    return 0;
  }
  if (bits == 24) return 1;
  if (bits != 1 && bits != 4 && bits != 8) return 0;

  const auto depth = static_cast<uint16_t>(bits);
  const uint32_t colors = 1u << bits;
  NewBlock block = NewBlock::WithDepth(*source, depth, colors, colors);
  if (!block) return 0;
  PaletteNetwork network(bits, source->pixels());
  if (!network) return 0;
  network.Learn(*source);
  // Not by the block's own header: with a size field below its length, the copy's rows are there.
  const DibHeader& header = source->header();
  uint8_t* const table = block.bytes() + header.header_size;
  MapPixels(*source, network, depth, network.WriteTable(table, header.table_step()));
  return block.Replace(image);
}
