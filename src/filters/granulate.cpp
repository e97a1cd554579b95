// omb_granulate: mosaic. Every pixel becomes the mean of the block that it is in.
//
// A row of blocks at a time, so that the image is read once and written once: rows add to a 16-bit
// sum for each column, columns to a 64-bit sum for each block, and the means make one row, which is
// copied to all.
#include <algorithm>
#include <cstring>

#include "core/buffer.h"
#include "core/indexed_colors.h"
#include "core/packed_dib.h"
#include "core/pixels.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr int32_t kRowsInSums = 257;  // 257 x 255 is the largest number of 16 bits
constexpr size_t kRoom = 8;           // bytes that are written after a row of means

class Mosaic {
 public:
  // Takes the memory; false when there is none.
  Mosaic(const Dib& dib, int32_t block_width, int32_t block_height)
      : dib_(dib),
        width_(static_cast<size_t>(dib.width())),
        block_(static_cast<size_t>(block_width)),
        block_height_(block_height) {
    if (dib.indexed()) {
      if (!colors_) return;
      colors_.Snapshot(dib);
      step_ = colors_.step();
    }
    bytes_ = width_ * step_;
    blocks_ = (width_ + block_ - 1) / block_;
    columns_ = NewScratchBuffer<uint16_t>(bytes_);
    sums_ = NewScratchBuffer<uint64_t>(blocks_ * step_);
    means_ = NewScratchBuffer<uint8_t>(blocks_ * step_);
    values_ = NewScratchBuffer<uint8_t>(bytes_ + kRoom);
    indices_ = NewScratchBuffer<uint8_t>(blocks_);
    ready_ = columns_ && sums_ && means_ && values_ && indices_;
  }
  explicit operator bool() const { return ready_; }

  // Blocks begin at the top of the picture, which is the last stored row.
  void Run() {
    for (int32_t end = dib_.pixel_rows(); end > 0; end -= std::min(end, block_height_)) {
      const int32_t first = end - std::min(end, block_height_);
      Sum(first, end);
      Divide(end - first);
      Write(first, end);
    }
  }

 private:
  void Sum(int32_t first, int32_t end) {
    std::fill_n(sums_.get(), blocks_ * step_, uint64_t{0});
    while (first < end) {
      const int32_t stop = std::min(end, first + kRowsInSums);
      std::memset(columns_.get(), 0, bytes_ * sizeof columns_[0]);
      for (; first < stop; ++first) {
        simd::Active().add_bytes(Values(first), bytes_, columns_.get());
      }
      simd::Active().sum_blocks(columns_.get(), step_, width_, block_, sums_.get());
    }
  }

  const uint8_t* Values(int32_t y) {
    if (!dib_.indexed() || colors_.identity()) return dib_.row(y);
    colors_.DecodeRow(dib_.row(y), 0, width_, values_.get());
    return values_.get();
  }

  void Divide(int32_t rows) {
    const auto divide = simd::Active().divide_sums;
    const auto height = static_cast<uint64_t>(rows);
    const size_t whole = width_ / block_ * step_, rest = width_ % block_;
    divide(sums_.get(), whole, height * block_, means_.get());
    if (rest != 0) divide(sums_.get() + whole, step_, height * rest, means_.get() + whole);
  }

  void Write(int32_t first, int32_t end) {
    const size_t step = dib_.indexed() ? 1 : step_;
    const uint8_t* means = means_.get();
    if (dib_.indexed()) {
      colors_.Encode(means_.get(), blocks_, indices_.get());
      means = indices_.get();
    }
    simd::Active().repeat_colors(means, step, width_, block_, values_.get());
    for (int32_t y = first; y < end; ++y) {
      if (dib_.indexed()) {
        PackIndices(values_.get(), dib_.bit_count(), width_, dib_.row(y));
      } else {
        std::memcpy(dib_.row(y), values_.get(), bytes_);
      }
    }
  }

  const Dib& dib_;
  IndexedColors colors_;
  const size_t width_, block_;  // of the image and of a block, in pixels
  const int32_t block_height_;
  size_t step_ = 3;        // bytes of a color
  size_t bytes_, blocks_;  // colors and blocks in a row
  Buffer<uint16_t> columns_;
  Buffer<uint64_t> sums_;
  Buffer<uint8_t> means_, values_, indices_;
  bool ready_ = false;
};

}  // namespace

}  // namespace ombrilo

uint32_t omb_granulate(PackedDib* image, uint32_t width, uint32_t height) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || width == 0 || height == 0) return 0;
  if (!dib->indexed() && dib->bit_count() != 24) return 0;
  if (dib->pixel_rows() == 0) return 1;
  const auto limited = [](uint32_t size, int32_t most) {
    return static_cast<int32_t>(std::min(size, static_cast<uint32_t>(most)));
  };
  Mosaic mosaic(*dib, limited(width, dib->width()), limited(height, dib->pixel_rows()));
  if (!mosaic) return 0;
  mosaic.Run();
  return 1;
}
