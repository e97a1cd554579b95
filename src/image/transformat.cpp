// omb_transformat: 16- and 32-bit images to 24 bits.
#include <algorithm>
#include <bit>
#include <cstring>

#include "core/bytes.h"
#include "core/packed_dib.h"
#include "core/replacement.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

struct Channel {
  uint32_t mask;
  int shift;  // down to bit 0
  int up;     // up to bit 7

  Channel() = default;
  explicit Channel(uint32_t m)
      : mask(m),
        // A shift of -1 for an empty mask and of 8 - width below 0 count modulo 32.
        shift(m == 0 ? 31 : std::countr_zero(m)),
        up((8 - std::popcount(m)) & 31) {}

  uint8_t Of(uint32_t pixel) const { return static_cast<uint8_t>((pixel & mask) >> shift << up); }
};

struct Layout {
  Channel blue, green, red;
  bool IsBytes() const { return blue.mask == 0xFF && green.mask == 0xFF00 && red.mask == 0xFF0000; }
};

Layout LayoutOf(const DibView& source) {
  if (source.ReadU32(kInfoCompression) == kBitfields) {
    return {Channel(source.ReadU32(kInfoHeaderSize + 8)),
            Channel(source.ReadU32(kInfoHeaderSize + 4)), Channel(source.ReadU32(kInfoHeaderSize))};
  }
  if (source.bit_count() == 32) return {Channel(0xFF), Channel(0xFF00), Channel(0xFF0000)};
  return {Channel(0x001F), Channel(0x03E0), Channel(0x7C00)};
}

template <int kBytes>
void ConvertRow(const Layout& layout, const uint8_t* from, int32_t width, uint8_t* to) {
  for (int32_t x = 0; x < width; ++x, from += kBytes, to += 3) {
    const uint32_t pixel = kBytes == 2 ? LoadU16(from) : LoadU32(from);
    to[0] = layout.blue.Of(pixel);
    to[1] = layout.green.Of(pixel);
    to[2] = layout.red.Of(pixel);
  }
}

// The new block has the header's first 40 bytes, whatever its kind, and room for the color table
// that these announce. Its rows start where the copied header says.
NewBlock NewTrueColorBlock(const DibView& source) {
  uint8_t fields[kInfoHeaderSize];
  source.Read(0, fields, sizeof fields);
  // At the information header's positions on purpose, also for a core header: that one keeps its
  // bit count.
  StoreU16(fields + kInfoBitCount, 24);
  StoreU32(fields + kInfoCompression, 0);
  StoreU32(fields + kInfoSizeImage, 0);
  const auto extent = DibHeader::Read(reinterpret_cast<const PackedDib*>(fields)).Extent();
  if (!extent) return {};
  // A bit count that stays makes the new header's extent another one than the new rows need.
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
  const Layout layout = LayoutOf(*source);
  const size_t stride = static_cast<size_t>(StrideOf(source->width(), 24));
  uint8_t* to = block.bytes() + source->prefix_size();
  for (int32_t y = 0; y < source->pixel_rows(); ++y, to += stride) {
    if (source->bit_count() == 16) {
      ConvertRow<2>(layout, source->row(y), source->width(), to);
    } else if (layout.IsBytes()) {
      rows::Active().drop_fourth_byte(source->row(y), static_cast<size_t>(source->width()), to);
    } else {
      ConvertRow<4>(layout, source->row(y), source->width(), to);
    }
  }
  block.Replace(image);
  return 1;
}
