// BMP files with a 40-byte header, or with one of version 5 where a color profile follows the rows.
// The rows are the image's own.
#include <vector>

#include "core/bytes.h"
#include "core/color_table.h"
#include "files/bmp_format.h"
#include "files/codec.h"
#include "files/metadata.h"
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

void WriteBmp(const PackedDib* dib, const Metadata& metadata, const Writing& writing) {
  const DibView view = ViewToWrite(dib);
  const Bytes profile = ProfileFor(metadata, omb_iscolorful(dib) == 0, writing.remark);
  if (!metadata.exif.empty()) writing.remark(kExifRemark);
  const uint32_t colors = ColorsOfDepth(view.bit_count());
  const bool masks = HasMasks(view);
  const size_t rows_size = view.stride() * static_cast<size_t>(view.height());
  // Masks follow a short header, and are at the same place inside the long one.
  const size_t header_size = !profile.empty() ? kVersion5Size
                             : masks          ? kInfoHeaderSize + kMasksSize
                                              : kInfoHeaderSize;
  std::vector<uint8_t> head(kFileHeaderSize + header_size + size_t{4} * colors);

  head[0] = 'B';
  head[1] = 'M';
  StoreU32(head.data() + kFileSize,
           static_cast<uint32_t>(head.size() + rows_size + profile.size()));
  StoreU32(head.data() + kFilePixels, static_cast<uint32_t>(head.size()));
  uint8_t* fields = head.data() + kFileHeaderSize;
  // The resolution stays; all other fields are written for what follows.
  if (!view.core()) view.Read(0, fields, kInfoHeaderSize);
  StoreU32(fields, profile.empty() ? kInfoHeaderSize : kVersion5Size);
  StoreU32(fields + kInfoWidth, static_cast<uint32_t>(view.width()));
  StoreU32(fields + kInfoHeight, static_cast<uint32_t>(view.height()));
  StoreU16(fields + kInfoPlanes, 1);
  StoreU16(fields + kInfoBitCount, view.bit_count());
  StoreU32(fields + kInfoCompression, masks ? kBitfields : 0);
  StoreU32(fields + kInfoSizeImage, static_cast<uint32_t>(rows_size));
  StoreU32(fields + kInfoClrUsed, 0);
  StoreU32(fields + kInfoClrImportant, 0);
  if (masks) view.Read(kInfoHeaderSize, fields + kInfoHeaderSize, kMasksSize);
  if (!profile.empty()) {
    StoreU32(fields + kVersion5Space, kEmbeddedProfile);
    StoreU32(fields + kVersion5Intent, kPerceptual);
    StoreU32(fields + kVersion5ProfileAt,
             static_cast<uint32_t>(head.size() - kFileHeaderSize + rows_size));
    StoreU32(fields + kVersion5ProfileSize, static_cast<uint32_t>(profile.size()));
  }
  for (uint32_t i = 0; i < colors; ++i) {
    ReadColors(view, i, 1, fields + header_size + size_t{4} * i);
  }
  // Whether the bytes arrive is asked when the file is closed.
  writing.out.Write(head.data(), head.size());
  for (int32_t y = 0; y < view.height(); ++y) {
    writing.out.Write(view.row(y), view.stride());
    ReportRow(y, view.height());
  }
  writing.out.Write(profile.data(), profile.size());
}

}  // namespace omb
