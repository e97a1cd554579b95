// The sampler that scaling and rotation share.
//
// A pixel of the new image has a fractional position in the source; ResampleMode says which source
// pixels around it are read and how they are blended. SamplePixel() does this for one pixel with
// every correction at the borders. Runs of pixels whose neighbours need no correction are fetched
// and blended by row functions, with the same arithmetic in the same order.
//
// Blends of indexed images work on color table colors; the result's nearest entry is stored. Where
// all entries are gray, one channel and a table from gray levels to indices do.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "core/buffer.h"
#include "core/nearest_entry.h"
#include "core/packed_dib.h"

namespace ombrilo {

// Any other value writes no pixel.
enum ResampleMode : uint32_t { kPoint = 1, kBilinear = 2, kBicubic = 3 };

// A position on one axis of the source. Rotation also has fractions between -1 and 0.
struct Position {
  int32_t whole;
  float fraction;
};

// Offsets of the four samples on one axis of the bicubic neighbourhood.
struct CubicOffsets {
  int32_t at[4];
};

class Sampler {
 public:
  // Pixels of a run at most; a multiple of 16, so that arrays begin with cache lines. A distance of
  // a multiple of 4 KiB would bring them into each other's way in the first-level cache.
  static constexpr int kRun = 2000;

  // Where a run's pixels find their neighbours in a row: byte offsets from the first source row,
  // and shifts as FindPixels() gives them.
  struct Taps {
    int32_t offset[4][kRun];
    uint8_t shift[4][kRun];
  };
  // The neighbours of a run's pixels in one row: a word of color each, or gray levels side by side
  // in the words of tap[0].
  struct Samples {
    uint32_t tap[4][kRun];
  };

  // Takes all its memory at once.
  Sampler(const DibView& source, uint32_t mode);
  // False when memory ran out.
  explicit operator bool() const { return ready_; }

  // Whether there is a pixel to read, of a depth and in a mode that are known.
  bool Paints() const;

  ResampleMode mode() const { return static_cast<ResampleMode>(mode_); }
  int32_t width() const { return source_.width(); }
  int32_t height() const { return source_.height(); }
  int32_t stride() const { return static_cast<int32_t>(source_.stride()); }

  // The blended color of pixel (x, y) of the new image; in point mode the pixel's value.
  uint32_t SamplePixel(Position column, Position row, int32_t x, int32_t y) const;

  // Whether runs serve this source; one that is smaller than the neighbourhood is left to
  // SamplePixel().
  bool FitsRuns() const { return std::min(width(), height()) >= tap_count(); }
  // Where a run may read on an axis of `size` pixels, so that all its neighbours lie in the source.
  // In bicubic mode positions outside are left to SamplePixel(); the other modes prescribe that
  // they are moved inside.
  struct Range {
    int32_t low, high;
    int32_t Limit(int32_t whole) const { return std::clamp(whole, low, high); }
  };
  Range Inner(int32_t size) const;
  // Offsets of the rows that pixels of row y of the new image read in bicubic mode.
  CubicOffsets RowOffsets(int32_t y) const;

  // Lets runs without `rows`, at ascending columns, read gray levels from rows that are decoded as
  // a whole: of less than 8 bits that takes less than finding each pixel's bits. False when memory
  // ran out.
  bool DecodeRows();
  // Finds the neighbours of inner positions columns[i] in rows[i], or in row 0 without `rows`.
  // Pixel [0] of the run has column x in the new image. Here and below, [first, end) of the run.
  void FindNeighbours(const int32_t* columns, const int32_t* rows, int32_t x, int first, int end,
                      Taps* taps);
  // Reads them `row_move` rows further up.
  void Fetch(const Taps& taps, int32_t row_move, int first, int end, Samples* samples);
  // Bilinear colors of neighbours in two rows. With `one_row`, here and below, dy[0] or the weights
  // [..][0] serve all pixels.
  void Blend(const Samples& lower, const Samples& upper, const float* dx, const float* dy,
             bool one_row, int first, int end, uint32_t* colors) const;
  // Whether pixels are copied in point mode without Fetch() and Store(); not at 4 bits.
  bool Picks() const { return mode_ == kPoint && source_.bit_count() != 4; }
  // Then: stores pixels `row_move` rows further up. At 1 bit, `first` is a multiple of 8.
  void Pick(const Taps& taps, int32_t row_move, int first, int end, uint8_t* row) const;
  // Whether bytes of the source are blended as they are, without Fetch() and Store().
  bool BlendsBytes() const {
    return source_.bit_count() == 24 || (source_.bit_count() == 8 && plain_gray_);
  }
  // Then: stores bilinear pixels of neighbours `row_move` rows further up and above these.
  void BlendBytes(const Taps& taps, int32_t row_move, const float* dx, const float* dy,
                  bool one_row, int first, int end, uint8_t* row) const;
  // Sums across `row_move` rows further up, and colors of four rows' sums, as below.
  void SumBytesAcross(const Taps& taps, int32_t row_move, int32_t x, const float (*weights)[kRun],
                      bool one_row, int first, int end, float* sums) const;
  void SumBytesDown(const float* const sums[4], const float* const weights[4], bool one_row,
                    int first, int end, uint8_t* row) const;
  // Asks for the memory `move` bytes behind the first neighbours. It may lie outside the source.
  void ReadAhead(const Taps& taps, ptrdiff_t move, int first, int end) const;
  // Bicubic sums of neighbours in a row, channel after channel in planes of kRun.
  void SumAcross(const Samples& samples, int32_t x, const float (*weights)[kRun], int first,
                 int end, float* sums) const;
  // Bicubic colors of four rows' sums.
  void SumDown(const float* const sums[4], const float* const weights[4], bool one_row, int first,
               int end, uint32_t* colors) const;

  // Stores colors [first, end) as pixels of `row`, whose first pixel is that of the run. In rows of
  // 1 and 4 bits the pixels before and behind them, up to `count`, get the highest index.
  void Store(const uint32_t* colors, int first, int end, int count, uint8_t* row);

 private:
  CubicOffsets ColumnOffsets(int32_t x) const;
  int32_t EndOfOffsets(int32_t x) const;
  void Place(const int32_t* columns, int32_t column_move, const int32_t* rows, int first, int end,
             int tap, Taps* taps) const;
  void FetchTap(const Taps& taps, int tap, int32_t row_move, int first, int end,
                uint32_t* colors) const;
  // Neighbours in a row.
  int tap_count() const { return mode_ == kBicubic ? 4 : static_cast<int>(mode_); }
  bool whole_words() const {
    return source_.bit_count() == 8 && (gray_ || mode_ == kPoint || mode_ == kBicubic);
  }
  // Bicubic neighbours come side by side, in a word for each channel.
  bool side_by_side() const { return gray_ || source_.bit_count() == 8; }

  uint32_t ColorAt(int32_t column, int32_t row) const;
  uint32_t BilinearColor(Position column, Position row) const;
  uint32_t BicubicColor(Position column, Position row, int32_t x, int32_t y) const;

  DibView source_;
  uint32_t mode_;
  bool ready_ = true;
  bool gray_ = false;        // an indexed image is blended in one channel
  uint32_t colors_[256];     // of the indices; the indices themselves in point mode
  uint8_t levels_[256];      // gray levels of the indices
  uint8_t gray_index_[256];  // and back
  bool plain_gray_ = false;  // indices are the levels
  std::optional<NearestEntry> nearest_;
  Buffer<uint8_t> decoded_;                        // levels of a part of a row
  int32_t decoded_first_ = 0, decoded_count_ = 0;  // its columns
};

}  // namespace ombrilo
