// Device bitmap to packed DIB.
#include <algorithm>
#include <optional>

#include "core/bytes.h"
#include "core/replacement.h"
#include "gdi/bridge.h"

namespace ombrilo {

namespace {

uint16_t DepthFor(uint16_t device_bits) {
  return device_bits <= 1 ? 1 : device_bits <= 4 ? 4 : device_bits <= 8 ? 8 : 24;
}

// Pixels of a bitmap as a DIB; the screen lends its colors.
PackedDib* CopyBits(gdi::Dc screen, gdi::Bitmap bitmap, const gdi::BitmapShape& shape) {
  const uint16_t depth = DepthFor(static_cast<uint16_t>(shape.planes * shape.bits_per_pixel));
  // Room for 2^depth colors: at 24 bits far more than any header needs.
  NewBlock block = NewBlock::Zeroed((uint64_t{4} << depth) + kInfoHeaderSize);
  if (!block) return nullptr;
  uint8_t* fields = block.bytes();
  StoreU32(fields, kInfoHeaderSize);
  StoreU32(fields + kInfoWidth, static_cast<uint32_t>(shape.width));
  StoreU32(fields + kInfoHeight, static_cast<uint32_t>(shape.height));
  StoreU16(fields + kInfoPlanes, 1);
  StoreU16(fields + kInfoBitCount, depth);
  // Without a place for pixels, the call completes the header.
  gdi::GetDIBits(screen, bitmap, 0, static_cast<uint32_t>(shape.height), nullptr, fields,
                 gdi::kDibRgbColors);

  const DibHeader header = DibHeader::Read(block.packed());
  const std::optional<size_t> extent = header.Extent();
  if (!extent) return nullptr;
  uint32_t rows_size = LoadU32(fields + kInfoSizeImage);
  if (rows_size == 0) {
    rows_size = static_cast<uint32_t>(StrideOf(header.width, depth) * header.height);
    StoreU32(fields + kInfoSizeImage, rows_size);
  }
  const uint64_t size = uint64_t{LoadU32(fields)} + header.table_size() + rows_size;
  if (!block.Resize(std::max<uint64_t>(size, *extent))) return nullptr;

  const size_t rows_offset = size_t{LoadU16(block.bytes())} + header.table_size();
  const int copied = gdi::GetDIBits(screen, bitmap, 0, static_cast<uint32_t>(header.height),
                                    block.bytes() + rows_offset, block.bytes(), gdi::kDibRgbColors);
  // The block stays allocated on purpose when its pixels cannot be copied.
  PackedDib* image = block.Release();
  return copied == 0 ? nullptr : image;
}

}  // namespace

PackedDib* BitmapToDib(gdi::Bitmap bitmap, gdi::Palette palette) {
  gdi::BitmapShape shape = {};
  if (bitmap == nullptr || gdi::GetObjectA(bitmap, sizeof shape, &shape) == 0) return nullptr;
  if (palette == nullptr) {
    palette = static_cast<gdi::Palette>(gdi::GetStockObject(gdi::kDefaultPalette));
  }
  const gdi::Dc screen = gdi::GetDC(nullptr);
  const gdi::Palette previous = gdi::SelectPalette(screen, palette, false);
  gdi::RealizePalette(screen);
  PackedDib* image = CopyBits(screen, bitmap, shape);
  gdi::SelectPalette(screen, previous, true);
  gdi::RealizePalette(screen);
  gdi::ReleaseDC(nullptr, screen);
  return image;
}

}  // namespace ombrilo
