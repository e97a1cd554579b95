// BMP files with a 40-byte header. The rows are the image's own.
#include "core/bytes.h"
#include "core/color_table.h"
#include "files/bmp_format.h"
#include "files/codec.h"
#include "files/pixels_out.h"

namespace omb {

using namespace ombrilo;

namespace {

constexpr size_t kMasksSize = 12;

bool HasMasks(const DibView& view) {
  return !view.core() && (view.bit_count() == 16 || view.bit_count() == 32) &&
         view.ReadU32(kInfoCompression) == kBitfields;
}

}  // namespace

void WriteBmp(const PackedDib* dib, std::FILE* file) {
  const DibView view = ViewToWrite(dib);
  const uint32_t colors = ColorsOfDepth(view.bit_count());
  const bool masks = HasMasks(view);
  const size_t rows_size = view.stride() * static_cast<size_t>(view.height());
  const size_t head_size =
      kFileHeaderSize + kInfoHeaderSize + (masks ? kMasksSize : 0) + size_t{4} * colors;

  uint8_t head[kFileHeaderSize + kInfoHeaderSize + 4 * 256] = {'B', 'M'};
  StoreU32(head + kFileSize, static_cast<uint32_t>(head_size + rows_size));
  StoreU32(head + kFilePixels, static_cast<uint32_t>(head_size));
  uint8_t* fields = head + kFileHeaderSize;
  // The resolution stays; all other fields are written for what follows.
  if (!view.core()) view.Read(0, fields, kInfoHeaderSize);
  StoreU32(fields, kInfoHeaderSize);
  StoreU32(fields + kInfoWidth, static_cast<uint32_t>(view.width()));
  StoreU32(fields + kInfoHeight, static_cast<uint32_t>(view.height()));
  StoreU16(fields + kInfoPlanes, 1);
  StoreU16(fields + kInfoBitCount, view.bit_count());
  StoreU32(fields + kInfoCompression, masks ? kBitfields : 0);
  StoreU32(fields + kInfoSizeImage, static_cast<uint32_t>(rows_size));
  StoreU32(fields + kInfoClrUsed, 0);
  StoreU32(fields + kInfoClrImportant, 0);
  if (masks) view.Read(kInfoHeaderSize, fields + kInfoHeaderSize, kMasksSize);
  for (uint32_t i = 0; i < colors; ++i) {
    ReadColors(view, i, 1, fields + kInfoHeaderSize + size_t{4} * i);
  }
  // Whether the bytes arrive is asked when the file is closed.
  std::fwrite(head, 1, head_size, file);
  std::fwrite(view.rows(), 1, rows_size, file);
}

}  // namespace omb
