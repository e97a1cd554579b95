// BMP files: a file header of 14 bytes, then what is nearly a packed DIB. The file header may be
// missing, as on the clipboard.
//
// Headers: 12 bytes (core), 40 (information), 52 and 56 (with color masks), 16 and 64 (OS/2 2.x),
// 108 (v4) and 124 (v5). All become 40 bytes. See "Bitmap Storage" in the Windows documentation.
#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>

#include "core/bytes.h"
#include "core/pixels.h"
#include "files/bmp_format.h"
#include "files/channel.h"
#include "files/codec.h"
#include "files/pixels_in.h"
#include "files/rle.h"
#include "text.h"

namespace omb {

using namespace ombrilo;

namespace {

constexpr uint32_t kOs2HeaderSize = 64, kShortOs2HeaderSize = 16;
constexpr uint32_t kHeaderSizes[] = {
    kCoreHeaderSize, kShortOs2HeaderSize, kInfoHeaderSize, 52, 56, kOs2HeaderSize, 108,
    kVersion5Size};

// Other values of biCompression than kBitfields.
enum Compression : uint32_t { kRgb = 0, kRle8 = 1, kRle4 = 2, kAlphaBitfields = 6 };

struct Layout {
  Masks color;
  uint32_t alpha;  // 0 where pixels have none
};

struct BmpHeader {
  size_t at;      // after the file header, or 0
  uint32_t size;  // of the header itself
  bool core;
  uint16_t bits;    // of a pixel in the file
  ImageSize image;  // with the depth of the image
  bool top_down;
  uint32_t compression;
  uint32_t colors;  // entries of the color table that the header announces
  Resolution resolution;
  size_t table_at;
  size_t pixels_at;

  bool runs() const { return compression == kRle8 || compression == kRle4; }
  bool masked() const { return compression == kBitfields || compression == kAlphaBitfields; }
  // At the same place, whether they are in the header or after it.
  size_t masks_at() const { return at + kInfoHeaderSize; }
  bool direct() const { return image.bit_count == 16 || image.bit_count == 32; }
  size_t table_step() const { return core ? 3 : 4; }
};

void NeedBytes(Bytes file, size_t end, const char* where) {
  if (file.size() < end) throw FileError(std::string("the file ends inside the ") + where);
}

void CheckKind(const BmpHeader& header, uint32_t planes) {
  const uint16_t bits = header.bits;
  if (planes > 1) throw FileError("it has " + std::to_string(planes) + " planes instead of 1");
  if (!IsIndexed(bits) && bits != 2 && bits != 24 && !header.direct()) {
    throw FileError("images of " + std::to_string(bits) + " bits per pixel are not supported");
  }
  // In an OS/2 header these numbers mean other methods.
  const bool masks = header.masked() && header.direct() && header.size != kOs2HeaderSize;
  const bool runs = header.runs() && bits == (header.compression == kRle8 ? 8 : 4);
  if (header.compression != kRgb && !masks && !runs) {
    throw FileError("compression method " + std::to_string(header.compression) + " at " +
                    std::to_string(bits) + " bits is not supported");
  }
  if (runs && header.top_down) throw FileError("a compressed image cannot be stored top-down");
}

// The fields of the header at `at`, whose size is known to be one of those above.
BmpHeader ReadFields(const uint8_t* fields, size_t at) {
  BmpHeader header = {};
  header.at = at;
  header.size = LoadU32(fields);
  header.core = header.size == kCoreHeaderSize;
  if (header.core) {
    header.bits = LoadU16(fields + kCoreBitCount);
    header.image = {LoadU16(fields + kCoreWidth), LoadU16(fields + kCoreHeight), 0};
  } else {
    const auto height = static_cast<int32_t>(LoadU32(fields + kInfoHeight));
    header.bits = LoadU16(fields + kInfoBitCount);
    header.image = {static_cast<int32_t>(LoadU32(fields + kInfoWidth)),
                    height < 0 ? -int64_t{height} : height, 0};
    header.top_down = height < 0;
  }
  if (header.size >= kInfoHeaderSize) {
    header.compression = LoadU32(fields + kInfoCompression);
    header.resolution = {static_cast<int32_t>(LoadU32(fields + kInfoXPelsPerMeter)),
                         static_cast<int32_t>(LoadU32(fields + kInfoYPelsPerMeter))};
    header.colors = LoadU32(fields + kInfoClrUsed);
  }
  header.image.bit_count = header.bits == 2 ? 4 : header.bits;
  return header;
}

uint32_t PlanesOf(const uint8_t* fields) {
  return LoadU16(fields + (LoadU32(fields) == kCoreHeaderSize ? kCoreBitCount - 2 : kInfoPlanes));
}

BmpHeader ReadHeader(Bytes file, size_t at) {
  NeedBytes(file, at + 4, "header");
  const uint8_t* fields = file.data() + at;
  const uint32_t size = LoadU32(fields);
  if (std::ranges::find(kHeaderSizes, size) == std::end(kHeaderSizes)) {
    throw FileError("a header of " + std::to_string(size) + " bytes is not supported");
  }
  NeedBytes(file, at + size, "header");
  BmpHeader header = ReadFields(fields, at);
  CheckKind(header, PlanesOf(fields));
  if (header.colors == 0 && header.bits <= 8) header.colors = 1u << header.bits;

  header.table_at = at + size;
  if (size == kInfoHeaderSize && header.masked()) {
    header.table_at += header.compression == kAlphaBitfields ? 16 : 12;
  }
  header.pixels_at = at == 0 ? 0 : LoadU32(file.data() + kFilePixels);
  if (header.pixels_at == 0) {
    header.pixels_at = header.table_at + header.colors * header.table_step();
  }
  if (header.pixels_at < header.table_at) throw FileError("the pixels begin inside the header");
  return header;
}

// Old files have fewer colors than the depth implies and say so only by where the pixels begin;
// others have more than the depth can use.
void ReadTable(Bytes file, const BmpHeader& header, const Dib& dib) {
  const size_t step = header.table_step();
  const size_t room = (header.pixels_at - header.table_at) / step;
  if (room == 0) throw FileError("the pixels begin where the color table belongs");
  const size_t count = std::min({size_t{header.colors}, room, size_t{1} << header.bits});
  NeedBytes(file, header.table_at + count * step, "color table");
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* bgr = file.data() + header.table_at + i * step;
    SetColor(dib, static_cast<uint32_t>(i), bgr[2], bgr[1], bgr[0]);
  }
}

// The rows as stored in the file, known to be there.
class StoredRows {
 public:
  StoredRows(Bytes file, const BmpHeader& header)
      : stride_(static_cast<size_t>(StrideOf(header.image.width, header.bits))),
        size_(static_cast<size_t>((header.image.width * header.bits + 7) / 8)),
        count_(static_cast<size_t>(header.image.height)),
        top_down_(header.top_down) {
    const size_t available = file.size() - std::min(header.pixels_at, file.size());
    // Only the last row may lack its padding.
    if (available < stride_ * (count_ - 1) + size_) {
      throw FileError("the file ends in row " +
                      std::to_string(std::min(available / stride_ + 1, count_)) + " of " +
                      std::to_string(count_));
    }
    rows_ = file.subspan(header.pixels_at).data();
  }

  size_t count() const { return count_; }
  size_t size() const { return size_; }  // bytes that hold pixels
  // The y-th row from the bottom of the picture.
  const uint8_t* operator[](size_t y) const {
    return rows_ + stride_ * (top_down_ ? count_ - 1 - y : y);
  }

 private:
  size_t stride_, size_, count_;
  bool top_down_;
  const uint8_t* rows_;
};

Layout ReadLayout(Bytes file, const BmpHeader& header) {
  const bool wide = header.image.bit_count == 32;
  const uint32_t all = wide ? 0xFFFFFFFF : 0xFFFF;
  if (!header.masked()) {
    return {UsualMasks(header.image.bit_count), 0};
  }
  NeedBytes(file, header.table_at, "color masks");
  const uint8_t* masks = file.data() + header.masks_at();
  Layout layout = {{LoadU32(masks) & all, LoadU32(masks + 4) & all, LoadU32(masks + 8) & all}, 0};
  if (header.size >= 56 || header.compression == kAlphaBitfields) {
    layout.alpha = LoadU32(masks + 12) & all;
  }
  if ((layout.color.red | layout.color.green | layout.color.blue) == 0) {
    throw FileError("the color masks are empty");
  }
  return layout;
}

uint32_t PixelAt(const uint8_t* row, size_t x, bool wide) {
  return wide ? LoadU32(row + 4 * x) : LoadU16(row + 2 * x);
}

// Files whose alpha is 0 everywhere never meant it.
bool HasTransparency(const StoredRows& rows, size_t width, bool wide, uint32_t alpha) {
  bool opaque = true;
  bool zero = true;
  for (size_t y = 0; y < rows.count(); ++y) {
    for (size_t x = 0; x < width; ++x) {
      const uint32_t value = PixelAt(rows[y], x, wide) & alpha;
      opaque = opaque && value == alpha;
      zero = zero && value == 0;
    }
  }
  return !opaque && !zero;
}

// Converts pixels that the library's depths and masks cannot hold to 24 bits.
Image ConvertPixels(const StoredRows& rows, const BmpHeader& header, const Layout& layout) {
  const bool wide = header.image.bit_count == 32;
  Image image = NewImage({header.image.width, header.image.height, 24}, header.resolution);
  const Dib dib = *Dib::Open(image.get());
  const Channel red(layout.color.red), green(layout.color.green), blue(layout.color.blue);
  const Channel alpha(layout.alpha);
  for (size_t y = 0; y < rows.count(); ++y) {
    uint8_t* to = dib.row(static_cast<int32_t>(y));
    for (size_t x = 0; x < static_cast<size_t>(dib.width()); ++x, to += 3) {
      const uint32_t pixel = PixelAt(rows[y], x, wide);
      const unsigned cover = layout.alpha == 0 ? 255 : alpha.Of(pixel);
      to[0] = OnWhite(blue.Of(pixel), cover);
      to[1] = OnWhite(green.Of(pixel), cover);
      to[2] = OnWhite(red.Of(pixel), cover);
    }
    ReportRow(static_cast<int64_t>(y), dib.height());
  }
  return image;
}

// The masks that the new image needs; none if the usual layout of its depth will do.
std::optional<Masks> MasksToKeep(const BmpHeader& header, const Masks& masks) {
  if (!header.direct() || masks == UsualMasks(header.image.bit_count)) return std::nullopt;
  return masks;
}

bool LibraryTakes(const Masks& m) {
  const bool overlap = (m.red & m.green) != 0 || (m.red & m.blue) != 0 || (m.green & m.blue) != 0;
  return !overlap && Channel(m.red).fits_byte() && Channel(m.green).fits_byte() &&
         Channel(m.blue).fits_byte();
}

Image ReadStored(Bytes file, const BmpHeader& header, const Remark& remark) {
  const StoredRows rows(file, header);
  Layout layout = {};
  if (header.direct()) {
    layout = ReadLayout(file, header);
    if (layout.alpha != 0 && !HasTransparency(rows, static_cast<size_t>(header.image.width),
                                              header.image.bit_count == 32, layout.alpha)) {
      layout.alpha = 0;
    }
    if (layout.alpha != 0) remark(kAlphaRemark);
    if (layout.alpha != 0 || !LibraryTakes(layout.color)) {
      return ConvertPixels(rows, header, layout);
    }
  }
  const std::optional<Masks> masks = MasksToKeep(header, layout.color);
  Image image = NewImage(header.image, header.resolution, masks ? &*masks : nullptr);
  const Dib dib = *Dib::Open(image.get());
  if (dib.indexed()) ReadTable(file, header, dib);
  for (size_t y = 0; y < rows.count(); ++y) {
    uint8_t* to = dib.row(static_cast<int32_t>(y));
    if (header.bits == 2) {
      ExpandTwoBits(rows[y], static_cast<size_t>(dib.width()), to);
    } else {
      std::memcpy(to, rows[y], rows.size());
    }
    ReportRow(static_cast<int64_t>(y), dib.height());
  }
  return image;
}

Image ReadRuns(Bytes file, const BmpHeader& header) {
  NeedBytes(file, header.pixels_at, "color table");
  Image image = NewImage(header.image, header.resolution);
  const Dib dib = *Dib::Open(image.get());
  ReadTable(file, header, dib);
  DecodeRuns(file.subspan(header.pixels_at), dib);
  return image;
}

void ReadProfile(Bytes file, const BmpHeader& header, Reading& reading) {
  const uint8_t* fields = file.data() + header.at;
  if (header.size != kVersion5Size || LoadU32(fields + kVersion5Space) != kEmbeddedProfile) return;
  const size_t at = header.at + LoadU32(fields + kVersion5ProfileAt);
  const size_t size = LoadU32(fields + kVersion5ProfileSize);
  reading.info.profile = size;
  if (!reading.pixels) return;
  if (at > file.size() || size > file.size() - at) {
    reading.remark("its color profile is not kept: the file ends inside it");
    return;
  }
  const Bytes profile = file.subspan(at, size);
  reading.metadata.profile.assign(profile.begin(), profile.end());
}

// Whether all colors are gray, by the table.
std::optional<bool> IsGray(Bytes file, const BmpHeader& header) {
  if (!IsIndexed(header.image.bit_count)) return {};
  const Image table = NewImage({1, 1, header.image.bit_count}, {});
  ReadTable(file, header, *Dib::Open(table.get()));
  return omb_iscolorful(table.get()) == 0;
}

std::string StoredOf(const BmpHeader& header) {
  std::string stored = BitsText(header.bits);
  if (IsIndexed(header.image.bit_count)) stored += " of a palette";
  if (header.runs()) stored += ", runs";
  return stored;
}

Image Read(Reading& reading, size_t header_at) {
  const Bytes file = reading.file;
  const BmpHeader header = ReadHeader(file, header_at);
  header.runs() ? CheckCompressedSize(header.image) : CheckSize(header.image);
  reading.info = {header.image.width, header.image.height, header.image.bit_count,
                  StoredOf(header),   header.resolution,   IsGray(file, header)};
  ReadProfile(file, header, reading);
  if (!reading.pixels) return nullptr;
  return header.runs() ? ReadRuns(file, header) : ReadStored(file, header, reading.remark);
}

}  // namespace

bool IsPackedDib(Bytes file) {
  if (file.size() < 16) return false;
  const uint8_t* fields = file.data();
  if (std::ranges::find(kHeaderSizes, LoadU32(fields)) == std::end(kHeaderSizes)) return false;
  constexpr int kDepths[] = {1, 2, 4, 8, 16, 24, 32};
  return PlanesOf(fields) == 1 &&
         std::ranges::find(kDepths, ReadFields(fields, 0).bits) != std::end(kDepths);
}

Image ReadBmp(Reading& reading) { return Read(reading, kFileHeaderSize); }

Image ReadPackedDib(Reading& reading) { return Read(reading, 0); }

}  // namespace omb
