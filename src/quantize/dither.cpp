// omb_dither: colors mapped to a learned palette, errors spread over neighbouring pixels.
//
// Errors go to the right and to the row stored before, which already holds palette colors. So rows
// do not depend on each other until they are mapped to indices, once the row after them is done.
//
// The error's shares 3/8 and 1/4 are defined in floating point: the share in double precision, cut
// to single, added to the neighbour's value in single, truncated toward 0. Errors are integers up
// to 255 and values stay below 2^12, so nothing is ever rounded, and integer eighths give the same.
#include <algorithm>

#include "core/pixels.h"
#include "core/replacement.h"
#include "quantize/palette_network.h"

namespace ombrilo {

namespace {

constexpr size_t kRows = 64;  // at a time

}  // namespace

}  // namespace ombrilo

int32_t omb_dither(PackedDib** image, int32_t bits) {
  using namespace ombrilo;
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source || source->bit_count() != 24) return 0;
  if (bits != 1 && bits != 2 && bits != 4 && bits != 8) return 0;

  // Indices of 1 and 2 bits are written as nibbles, at the row length of the requested depth, so
  // that rows overlap. That is the contract, and the block has room for it.
  const uint16_t packing = bits == 8 ? 8 : 4;
  const auto depth = static_cast<uint16_t>(bits);
  const uint32_t colors = 1u << bits;
  NewBlock block = NewBlock::WithDepth(*source, depth, colors, 0, packing);
  if (!block) return 0;
  const auto height = static_cast<size_t>(source->pixel_rows());
  const size_t width = height == 0 ? 0 : static_cast<size_t>(source->width());
  PaletteNetwork network(bits, source->pixels());
  const auto before = NewZeroedBuffer<uint32_t>(width);  // the last row's colors
  const auto indices = NewScratchBuffer<uint8_t>(std::min(kRows, height) * width);
  if (!network || !before || !indices) return 0;

  network.Learn(*source);
  // Not by the block's own header, which announces no table at 2 bits.
  const DibHeader& header = source->header();
  uint8_t* const table = block.bytes() + header.header_size;
  uint8_t* const rows = network.WriteTable(table, header.table_step());
  const auto stride = static_cast<size_t>(StrideOf(source->width(), depth));

  // Errors are relative to the colors at byte 40, where an information header has its table,
  // whatever the header is. That is the contract.
  uint32_t seen[256] = {};
  for (size_t i = 0; i < colors; ++i) {
    for (size_t c = 0; c < 3; ++c) {
      const size_t at = kInfoHeaderSize + 4 * i + c;
      if (at < block.size()) seen[i] |= static_cast<uint32_t>(block.bytes()[at]) << 8 * c;
    }
  }
  const auto store = [&](size_t y, const uint8_t* row) {
    PackIndices(row, packing, width, rows + y * stride);
  };
  for (size_t y = 0; y < height; y += kRows) {
    const size_t count = std::min(kRows, height - y);
    network.Diffuse(seen, source->row(static_cast<int32_t>(y)), source->stride(), width, count,
                    before.get(), indices.get());
    for (size_t k = y == 0 ? 1 : 0; k < count; ++k) store(y + k - 1, indices.get() + k * width);
  }
  if (height > 0) {
    network.Find(reinterpret_cast<const uint8_t*>(before.get()), 4, width, indices.get());
    store(height - 1, indices.get());
  }
  return block.Replace(image);
}
