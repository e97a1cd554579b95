// The replacement frame: an operation that changes size or depth builds a complete new block, and
// only then gives up the caller's. A new block starts zeroed, so padding, gaps and unwritten pixels
// are 0 (an operation that writes every pixel may have just the rest zeroed), and it is released by
// every early return.
//
//   NewBlock block = NewBlock::Resized(*source, width, height);
//   if (!block) return 0;
//   ... fill block.dib().row(y) ...
//   return block.Replace(image);
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/buffer.h"
#include "core/packed_dib.h"

namespace ombrilo {

class NewBlock {
 public:
  // A zeroed block of `size` bytes; null when `size` exceeds a signed 32-bit count or memory runs
  // out. The caller writes the header.
  static NewBlock Zeroed(uint64_t size);

  // A block of `size` bytes whose rows start at `rows_offset`, for a caller who writes the first
  // `pixel_bytes` bytes of each row, all of them, before anyone else sees the block. Every other
  // byte is 0. Null as above.
  static NewBlock ZeroedAroundPixels(uint64_t size, size_t rows_offset, size_t rows,
                                     size_t pixel_bytes, size_t stride);

  // The zeroed block that a header describes; `fields` are its 12 or 40 bytes, which are copied.
  static NewBlock WithHeader(const uint8_t* fields);

  // An image of 1, 4, 8, 16, 24 or 32 bits with an information header and 1 plane; a table, where
  // the depth has one, is a gray ramp from black to white. Rows as below.
  enum class Rows { kZeroed, kPixelsComeNext };
  static NewBlock Fresh(int32_t width, int32_t height, uint16_t bit_count, Rows rows);

  // The source's header and color table with another width and height, and zeroed rows. Sizes are
  // stored in the fields of the source's header kind (16 bits after a core header). Null when the
  // size cannot be honoured or memory runs out. For a caller who writes every pixel, only the bytes
  // after a row's last whole byte of pixels are zeroed.
  static NewBlock Resized(const DibView& source, int64_t width, int64_t height,
                          Rows rows = Rows::kZeroed);

  // An image of the source's width and height with another bit count: the source's header with that
  // bit count and, after an information header, `colors_used` as biClrUsed and a biClrImportant of
  // 0; a zeroed table of `entries` colors and zeroed rows. All other fields keep their values,
  // biSizeImage too. A negative height or width is kept and gives a block without rows. Ask for
  // dib() before writing table or rows: a size field below the header's own length puts them over
  // the header. The block has room for rows of `room` bits per pixel; with kPixelsComeNext, these
  // are the rows that the caller writes.
  static NewBlock WithDepth(const DibView& source, uint16_t bit_count, uint32_t entries,
                            uint32_t colors_used, uint16_t room, Rows rows = Rows::kZeroed);
  static NewBlock WithDepth(const DibView& source, uint16_t bit_count, uint32_t entries,
                            uint32_t colors_used) {
    return WithDepth(source, bit_count, entries, colors_used, bit_count);
  }

  // The same at 1 or 8 bits, with a full table, for a caller who writes every pixel.
  static NewBlock Indexed(const DibView& source, uint16_t bit_count);
  // The same with another width and height too, both 1 or more: at 8 bits with a full table or at
  // 24 without one.
  static NewBlock WithSizeAndDepth(const DibView& source, int32_t width, int32_t height,
                                   uint16_t bit_count);

  explicit operator bool() const { return bytes_ != nullptr; }
  uint8_t* bytes() const { return bytes_.get(); }
  size_t size() const { return size_; }
  PackedDib* packed() const { return reinterpret_cast<PackedDib*>(bytes_.get()); }
  // The image that the block's header describes now.
  Dib dib() const { return *Dib::Open(packed()); }

  // Makes the block larger, with zeros at its end, or smaller. False, with the block as it was,
  // when the size exceeds a signed 32-bit count or memory runs out.
  bool Resize(uint64_t size);

  // Hands the block to the caller, who releases it with free(). Null when it cannot be made to hold
  // what its header announces.
  PackedDib* Release();
  // Frees the caller's block and stores the new one in its place. False, with the caller's block as
  // it was, when the new one cannot be made to hold what its header announces.
  [[nodiscard]] bool Replace(PackedDib** image);

 private:
  // No block is handed out that is smaller than its finished header says: sizes that were cut to 16
  // bits, or rows over the header, can announce more than was asked for. The bytes added are 0.
  bool HoldsExtent();

  static NewBlock WithDepth(const DibView& source, int32_t width, int32_t height,
                            uint16_t bit_count, uint32_t entries, uint32_t colors_used,
                            uint16_t room, Rows rows);
  void StoreSize(bool core, int64_t width, int64_t height) const;

  Buffer<uint8_t> bytes_;
  size_t size_ = 0;
};

// Calls convert(from, pixels, to) for rows of the same size in two images; if neither has padding,
// once for all of them.
template <class Convert>
void ConvertRows(const DibView& source, const Dib& result, Convert&& convert) {
  const bool joined = source.unpadded() && result.unpadded();
  const auto width = static_cast<size_t>(source.width());
  const int32_t rows = source.pixel_rows(), runs = joined ? std::min(rows, 1) : rows;
  const size_t pixels = joined ? width * static_cast<size_t>(rows) : width;
  for (int32_t y = 0; y < runs; ++y) convert(source.row(y), pixels, result.row(y));
}

}  // namespace ombrilo
