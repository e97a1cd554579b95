// omb_transformat: 16- and 32-bit images to 24 bits.
#include <algorithm>
#include <cstring>

#include "core/bytes.h"
#include "core/high_color.h"
#include "core/packed_dib.h"
#include "core/replacement.h"
#include "image/row_stream.h"

namespace ombrilo {

namespace {

// The new block has the header's first 40 bytes, whatever its kind, and room for the color table
// that these announce. Its rows start where the copied header says.
NewBlock NewTrueColorBlock(const DibView& source) {
  uint8_t fields[kInfoHeaderSize];
  source.Read(0, fields, sizeof fields);
  // At the information header's positions on purpose, even for a core header, whose bit count
  // therefore stays.
  StoreU16(fields + kInfoBitCount, 24);
  StoreU32(fields + kInfoCompression, 0);
  StoreU32(fields + kInfoSizeImage, 0);
  const auto extent = DibHeader::Read(reinterpret_cast<const PackedDib*>(fields)).Extent();
  if (!extent) return {};
  // If the bit count stays, the new header's extent is not what the new rows need.
  const size_t stride = static_cast<size_t>(StrideOf(source.width(), 24));
  const size_t rows = static_cast<size_t>(source.pixel_rows());
  NewBlock block = NewBlock::ZeroedAroundPixels(
      std::max<uint64_t>({*extent, source.prefix_size() + stride * rows, sizeof fields}),
      source.prefix_size(), rows, size_t{3} * static_cast<size_t>(source.width()), stride);
  if (block) std::memcpy(block.bytes(), fields, sizeof fields);
  return block;
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_transformat(PackedDib** image) {
  using namespace ombrilo;
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source) return 0;
  if (source->indexed() || source->bit_count() == 24) return 1;
  if (source->bit_count() != 16 && source->bit_count() != 32) return 0;

  NewBlock block = NewTrueColorBlock(*source);
  if (!block) return 0;
  const HighColor pixels(*source);
  const size_t stride = static_cast<size_t>(StrideOf(source->width(), 24));
  uint8_t* to = block.bytes() + source->prefix_size();
  const RowStream result(source->bit_count() == 32, source->extent(), block.size());
  for (int32_t y = 0; y < source->pixel_rows(); ++y, to += stride) {
    result.Write(to, static_cast<size_t>(source->width()), 24,
                 [&](size_t first, size_t count, uint8_t* piece) {
                   pixels.ToBgr(source->row(y) + first * source->bit_count() / 8, count, piece);
                 });
  }
  return block.Replace(image);
}
