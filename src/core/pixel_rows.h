// Rows of pixels inside a block, with the sizes that an operation takes from the header. Some
// operations cut these to 16 bits or count planes, so that their rows need not be those of the
// image: bytes past the block's extent read as 0 and are never written.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "core/packed_dib.h"

namespace ombrilo {

struct PixelRows {
  uint8_t* first;  // row 0
  size_t inside;   // bytes from `first` to the end of the extent
  int32_t width;
  int32_t height;
  size_t stride;
  uint16_t bit_count;

  uint64_t pixels() const { return static_cast<uint64_t>(width) * static_cast<uint64_t>(height); }

  static PixelRows Of(const Dib& dib) {
    return With(dib, dib.width(), dib.pixel_rows(), dib.stride(), dib.bit_count());
  }
  static PixelRows With(const Dib& dib, int32_t width, int32_t height, size_t stride,
                        uint16_t bit_count) {
    return {dib.rows(), dib.extent() - dib.prefix_size(), width, height, stride, bit_count};
  }
  // Width and height cut to 16 bits, and the row length that follows from the cut width.
  static PixelRows Of16Bits(const Dib& dib) {
    const auto width = static_cast<uint16_t>(dib.header().width);
    const auto height = static_cast<uint16_t>(dib.header().height);
    return With(dib, width, height, static_cast<size_t>(StrideOf(width, dib.bit_count())),
                dib.bit_count());
  }
  // Rows of no planes hold no bytes, whatever their width.
  static bool WithoutPlanes(const Dib& dib) {
    return dib.ReadU16(kInfoPlanes) == 0 || dib.ReadU16(kInfoBitCount) == 0;
  }
  // A row length that counts planes. Its fields are taken at their information header positions
  // after a core header too.
  static int32_t StrideWithPlanes(const Dib& dib, uint32_t width) {
    return ombrilo::StrideWithPlanes(width, dib.ReadU16(kInfoPlanes), dib.ReadU16(kInfoBitCount));
  }
  // Width and height cut to 16 bits, and a row length that counts planes, also cut to 16 bits.
  static PixelRows WithPlanes(const Dib& dib, uint32_t stride_width, uint16_t bit_count) {
    return With(dib, static_cast<uint16_t>(dib.header().width),
                static_cast<uint16_t>(dib.header().height),
                static_cast<uint16_t>(StrideWithPlanes(dib, stride_width)), bit_count);
  }
  // Whether rows do not overlap, and the extent fits a signed 32-bit count.
  bool Fits(const Dib& dib) const {
    return row_bytes() <= stride && dib.prefix_size() + uint64_t{stride} * uint64_t(height) <=
                                        uint64_t(std::numeric_limits<int32_t>::max());
  }

  size_t row_bytes() const { return (size_t(width) * bit_count + 7) / 8; }
  uint8_t* row(int32_t y) const { return first + size_t(y) * stride; }

  // How many of a row's first `count` bytes lie inside the extent.
  size_t Inside(int32_t y, size_t count) const {
    const uint64_t start = uint64_t(y) * stride;
    return start >= inside ? 0 : std::min<size_t>(count, inside - static_cast<size_t>(start));
  }
  // The number of rows that lie inside at least in part.
  int32_t rows_inside() const {
    if (stride == 0) return 0;
    return static_cast<int32_t>(
        std::min<uint64_t>(uint64_t(height), (inside + stride - 1) / stride));
  }

  void Read(int32_t y, size_t count, uint8_t* to) const {
    const size_t there = Inside(y, count);
    if (there != 0) std::memcpy(to, row(y), there);
    if (there != count) std::memset(to + there, 0, count - there);
  }
  void Write(int32_t y, const uint8_t* from, size_t count) const {
    const size_t there = Inside(y, count);
    if (there != 0) std::memcpy(row(y), from, there);
  }
};

}  // namespace ombrilo
