// omb_neuquant: colors mapped to a learned palette.
#include <algorithm>

#include "core/color_table.h"
#include "core/palette.h"
#include "core/pixels.h"
#include "core/replacement.h"
#include "quantize/palette_network.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

void ExpandTo24Bits(const DibView& source, const Dib& copy) {
  const Palette palette = *MakeDIBPalette(source);
  const auto expand = rows::Active().expand_colors;
  for (int32_t y = 0; y < source.pixel_rows(); ++y) {
    uint8_t* to = copy.row(y);
    ForEachIndexRun(source.row(y), source.bit_count(), static_cast<size_t>(source.width()),
                    [&](size_t first, const uint8_t* indices, size_t count) {
                      expand(indices, count, palette.bgr[0], to + 3 * first);
                    });
  }
}

void MapPixels(const DibView& source, PaletteNetwork& network, const Dib& to) {
  constexpr size_t kRun = 1024;
  uint8_t indices[kRun];
  const size_t width = static_cast<size_t>(source.width());
  for (int32_t y = 0; y < source.pixel_rows(); ++y) {
    const uint8_t* bgr = source.row(y);
    for (size_t first = 0; first < width; first += kRun) {
      const size_t count = std::min(kRun, width - first);
      for (size_t x = 0; x < count; ++x, bgr += 3) {
        indices[x] = network.Find(bgr[0], bgr[1], bgr[2]);
      }
      PackIndices(indices, to.bit_count(), count, to.row(y) + first * to.bit_count() / 8);
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
    ExpandTo24Bits(*source, block.dib());
    const size_t size = block.size();
    // From here on the caller has the 24-bit copy, also when a later step fails.
    block.Replace(image);
    // Rows over the header, where its size field is that small, make it say anything.
    source = DibView::Open(*image);
    if (!source || source->bit_count() != 24 || source->extent() > size) return 0;
  } else if (source->bit_count() != 24) {
    return 0;
  }
  if (bits == 24) return 1;
  if (bits != 1 && bits != 4 && bits != 8) return 0;

  const uint32_t colors = 1u << bits;
  NewBlock block = NewBlock::WithDepth(*source, static_cast<uint16_t>(bits), colors, colors);
  if (!block) return 0;
  PaletteNetwork network(bits);
  if (!network) return 0;
  const Dib result = block.dib();
  network.Learn(*source);
  WriteColors(result, 0, colors, network.bgr());
  MapPixels(*source, network, result);
  block.Replace(image);
  return 1;
}
