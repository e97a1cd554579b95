// omb_granulate: mosaic. Every pixel becomes the mean of the block that it is in.
//
// A tile at a time: some blocks next to each other, so that what is read, summed and written stays
// in a near cache. Rows add to a 16-bit sum for each column, columns to a sum for each block,
// and the means make one row, which is copied to all.
#include <algorithm>
#include <optional>

#include "core/buffer.h"
#include "core/indexed_colors.h"
#include "core/packed_dib.h"
#include "core/pixels.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr int32_t kRowsInSums = 257;  // 257 x 255 is the largest number of 16 bits
constexpr size_t kTileBytes = 8192;   // of a row, unless eight blocks are longer; with a page
                                      // of memory, processors would foresee too little

class Mosaic {
 public:
  // Takes the memory; false when there is none.
  Mosaic(const Dib& dib, int32_t block_width, int32_t block_height)
      : dib_(dib),
        width_(static_cast<size_t>(dib.width())),
        block_(static_cast<size_t>(block_width)),
        block_height_(block_height) {
    if (dib.indexed()) {
      const auto blocks = uint64_t{width_ / block_ + 1} *
                          static_cast<uint64_t>(dib.pixel_rows() / block_height + 1);
      colors_.emplace(blocks, !MakeDIBPalette(dib)->AllGray());
      if (!*colors_) return;
      colors_->Snapshot(dib);
      step_ = colors_->step();
      coded_ = !colors_->identity();
    }
    // Tiles begin at whole bytes of any depth.
    const size_t blocks = std::max<size_t>(kTileBytes / step_ / block_ / 8 * 8, 8);
    tile_ = block_ <= width_ / blocks ? block_ * blocks : width_;
    if (tile_ > SIZE_MAX / 16) return;
    columns_ = NewScratchBuffer<uint16_t>(tile_ * step_ + simd::kBlocksRoom);
    means_ = NewScratchBuffer<uint8_t>(blocks * step_ + simd::kBlocksRoom);
    indices_ = NewScratchBuffer<uint8_t>(blocks + simd::kBlocksRoom);
    const size_t rows =
        coded_ ? std::min<size_t>(simd::kMostSummedRows, static_cast<size_t>(block_height)) : 1;
    values_ = NewScratchBuffer<uint8_t>(rows * tile_ * step_ + simd::kBlocksRoom);
    const bool small = uint64_t{block_} * static_cast<uint64_t>(block_height) <= simd::kSmallBlock;
    if (!small) sums_ = NewScratchBuffer<uint64_t>(blocks * step_);
    ready_ = columns_ && means_ && indices_ && values_ && (small || sums_);
  }
  explicit operator bool() const { return ready_; }

  // Blocks begin at the top of the picture, which is the last stored row.
  void Run() {
    for (int32_t end = dib_.pixel_rows(); end > 0; end -= std::min(end, block_height_)) {
      const int32_t first = end - std::min(end, block_height_);
      for (size_t x = 0; x < width_; x += tile_) {
        const Tile tile = {x, std::min(tile_, width_ - x), first, end};
        if (sums_) {
          AverageLarge(tile);
        } else {
          AverageSmall(tile);
        }
        Write(tile);
      }
    }
  }

 private:
  struct Tile {
    size_t x, width;
    int32_t first, end;  // rows
  };

  uint8_t* Row(const Tile& tile, int32_t y) const {
    return dib_.row(y) + tile.x * dib_.bit_count() / 8;
  }

  // Up to kRowsInSums rows.
  void SumColumns(const Tile& tile, int32_t first, int32_t end) {
    const size_t count = tile.width * step_;
    for (int32_t y = first; y < end;) {
      const uint8_t* rows[simd::kMostSummedRows];
      size_t n = 0;
      const bool add = y != first;
      for (; y < end && n < simd::kMostSummedRows; ++y, ++n) {
        rows[n] = Row(tile, y);
        if (!coded_) continue;
        uint8_t* const values = values_.get() + n * count;
        colors_->DecodeRow(rows[n], 0, tile.width, values);
        rows[n] = values;
      }
      simd::Active().sum_rows(rows, n, count, add, columns_.get());
    }
  }

  void AverageSmall(const Tile& tile) {
    SumColumns(tile, tile.first, tile.end);
    const auto average = simd::Active().average_blocks;
    const auto height = static_cast<size_t>(tile.end - tile.first);
    const size_t blocks = tile.width / block_, rest = tile.width % block_;
    average(columns_.get(), step_, blocks, block_, height, means_.get());
    if (rest != 0) {
      average(columns_.get() + blocks * block_ * step_, step_, 1, rest, height,
              means_.get() + blocks * step_);
    }
  }

  void AverageLarge(const Tile& tile) {
    const size_t blocks = (tile.width + block_ - 1) / block_;
    std::fill_n(sums_.get(), blocks * step_, uint64_t{0});
    for (int32_t y = tile.first; y < tile.end; y += std::min(tile.end - y, kRowsInSums)) {
      SumColumns(tile, y, y + std::min(tile.end - y, kRowsInSums));
      size_t n;
      for (size_t x = 0; x < tile.width; x += n) {
        n = std::min({block_ - x % block_, tile.width - x, size_t{simd::kMostColumns}});
        simd::Active().add_columns(columns_.get() + x * step_, step_, n,
                                   sums_.get() + x / block_ * step_);
      }
    }
    for (size_t i = 0; i < blocks * step_; ++i) {
      const size_t width = std::min(block_, tile.width - i / step_ * block_);
      const uint64_t pixels = uint64_t{width} * static_cast<uint64_t>(tile.end - tile.first);
      means_[i] = static_cast<uint8_t>((sums_[i] + pixels / 2) / pixels);
    }
  }

  void Write(const Tile& tile) {
    const simd::RowFunctions& functions = simd::Active();
    const size_t step = dib_.indexed() ? 1 : 3;
    const uint8_t* means = means_.get();
    if (coded_) {
      colors_->Encode(means, (tile.width + block_ - 1) / block_, indices_.get());
      means = indices_.get();
    }
    functions.repeat_colors(means, step, tile.width, block_, values_.get());
    for (int32_t y = tile.first; y < tile.end; ++y) {
      if (dib_.bit_count() < 8) {
        PackIndices(values_.get(), dib_.bit_count(), tile.width, Row(tile, y));
      } else {
        functions.copy(values_.get(), tile.width * step, Row(tile, y));
      }
    }
  }

  const Dib& dib_;
  std::optional<IndexedColors> colors_;  // indexed images
  const size_t width_, block_;           // of the image and of a block, in pixels
  const int32_t block_height_;
  bool coded_ = false;  // pixels have to be decoded
  size_t step_ = 3;     // bytes of a color
  size_t tile_;         // pixels of a row
  Buffer<uint16_t> columns_;
  Buffer<uint64_t> sums_;  // of blocks that are not small
  Buffer<uint8_t> means_, indices_, values_;
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
