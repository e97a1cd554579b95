// The packed DIB: one block that holds a bitmap header, the color table and the pixel rows, back
// to back. The rules about the header live here; operations that take single fields by rules of
// their own read them by the offsets below.
//
//   header       size field 40: BITMAPINFOHEADER. Any other value: BITMAPCOREHEADER, whose color
//                table and rows follow at that many bytes.
//   color table  blue, green, red, reserved (information header) or blue, green, red (core header)
//   pixel rows   bottom row first, each padded to a multiple of 4 bytes
//
// A height below 1 means that there are no rows; compression and image size fields are ignored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "ombrilo/ombrilo.h"

namespace ombrilo {

inline constexpr uint32_t kInfoHeaderSize = 40;
inline constexpr uint32_t kCoreHeaderSize = 12;

// Offsets of BITMAPINFOHEADER fields that operations read or write by themselves.
inline constexpr size_t kInfoWidth = 4;
inline constexpr size_t kInfoHeight = 8;
inline constexpr size_t kInfoPlanes = 12;
inline constexpr size_t kInfoBitCount = 14;
inline constexpr size_t kInfoCompression = 16;
inline constexpr size_t kInfoSizeImage = 20;
inline constexpr size_t kInfoXPelsPerMeter = 24;
inline constexpr size_t kInfoYPelsPerMeter = 28;
inline constexpr size_t kInfoClrUsed = 32;
inline constexpr size_t kInfoClrImportant = 36;

// biCompression of 16- and 32-bit images whose red, green and blue masks follow the header.
inline constexpr uint32_t kBitfields = 3;

// Offsets of BITMAPCOREHEADER fields.
inline constexpr size_t kCoreWidth = 4;
inline constexpr size_t kCoreHeight = 6;
inline constexpr size_t kCoreBitCount = 10;

// Number of colors that a bit count implies: 2, 16 or 256 for 1, 4 and 8, otherwise 0.
constexpr uint32_t ColorsOfDepth(uint16_t bit_count) {
  return bit_count == 1 ? 2 : bit_count == 4 ? 16 : bit_count == 8 ? 256 : 0;
}

constexpr bool IsIndexed(uint16_t bit_count) { return ColorsOfDepth(bit_count) != 0; }

// Bytes per row, padded to 4. Exact; negative for negative widths.
constexpr int64_t StrideOf(int64_t width, uint16_t bit_count) {
  return (width * bit_count + 31) / 32 * 4;
}

// A row length that counts planes, in 32-bit arithmetic that wraps.
constexpr int32_t StrideWithPlanes(uint32_t width, uint16_t planes, uint16_t bit_count) {
  return static_cast<int32_t>(uint32_t{planes} * bit_count * width + 31) / 32 * 4;
}

// The header fields as stored, without any check.
struct DibHeader {
  uint32_t header_size;  // the size field
  bool core;             // size field other than 40
  int32_t width;
  int32_t height;
  uint16_t bit_count;
  uint32_t color_count;  // biClrUsed, or implied by the bit count; all 32 bits

  static DibHeader Read(const PackedDib* dib);

  // Loops over the color table see only the low 16 bits of the count, and the table's size in
  // bytes is a 16-bit number too: a biClrUsed of 65537 announces 4 bytes, one of 16384 none.
  uint16_t table_count() const { return static_cast<uint16_t>(color_count); }
  uint32_t table_step() const { return core ? 3 : 4; }
  uint16_t table_size() const { return static_cast<uint16_t>(table_count() * table_step()); }
  // Length of the header fields, whatever the size field says.
  size_t fields_size() const { return core ? kCoreHeaderSize : kInfoHeaderSize; }
  // May exceed 32 bits when the size field lies.
  uint64_t rows_offset() const { return uint64_t{header_size} + table_size(); }
  // header + color table + rows: what belongs to the block (the header fields at least). Null if a
  // row's bits or the whole extent do not fit a signed 32-bit count.
  std::optional<size_t> Extent() const;
};

// A read-only view of a block whose extent is known to be addressable. Reads through it stay
// inside the extent: what lies beyond counts as 0.
class DibView {
 public:
  // Null for a null pointer and for a header whose extent cannot be honoured.
  static std::optional<DibView> Open(const PackedDib* dib);

  const DibHeader& header() const { return header_; }
  bool core() const { return header_.core; }
  uint16_t bit_count() const { return header_.bit_count; }
  bool indexed() const { return IsIndexed(header_.bit_count); }
  // Pixels per row and number of rows; 0 where the header holds less.
  int32_t width() const { return header_.width < 1 ? 0 : header_.width; }
  int32_t height() const { return header_.height < 1 ? 0 : header_.height; }
  // Rows that hold pixels: none without columns or bits.
  int32_t pixel_rows() const { return stride() == 0 ? 0 : height(); }
  uint64_t pixels() const {
    return static_cast<uint64_t>(width()) * static_cast<uint64_t>(pixel_rows());
  }
  size_t stride() const { return static_cast<size_t>(StrideOf(width(), bit_count())); }
  // Whether rows follow each other without padding, so that all pixels are a single run.
  bool unpadded() const { return stride() * 8 == static_cast<size_t>(width()) * header_.bit_count; }
  size_t extent() const { return extent_; }
  // The same view of the block after it was moved.
  DibView At(const PackedDib* moved) const { return DibView(moved, header_, extent_); }
  // Header and color table, the part that size-changing operations copy.
  size_t prefix_size() const { return static_cast<size_t>(header_.rows_offset()); }

  const uint8_t* block() const { return block_; }
  const uint8_t* rows() const { return block_ + prefix_size(); }
  const uint8_t* row(int32_t stored_row) const {
    return rows() + static_cast<size_t>(stored_row) * stride();
  }

  // Copies bytes [offset, offset + count) of the block; bytes past the extent are 0.
  void Read(size_t offset, void* to, size_t count) const;
  uint16_t ReadU16(size_t offset) const;
  uint32_t ReadU32(size_t offset) const;

 protected:
  DibView(const PackedDib* dib, const DibHeader& header, size_t extent);

 private:
  DibHeader header_;
  size_t extent_;
  const uint8_t* block_;
};

// A view that may also write.
class Dib : public DibView {
 public:
  static std::optional<Dib> Open(PackedDib* dib);

  uint8_t* block() const { return const_cast<uint8_t*>(DibView::block()); }
  uint8_t* rows() const { return const_cast<uint8_t*>(DibView::rows()); }
  uint8_t* row(int32_t stored_row) const { return const_cast<uint8_t*>(DibView::row(stored_row)); }

  // Writes bytes at [offset, offset + count) of the block; what falls past the extent is dropped.
  void Write(size_t offset, const void* from, size_t count) const;

 private:
  using DibView::DibView;
};

}  // namespace ombrilo
