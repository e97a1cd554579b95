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
  // Pixels of a run at most; a multiple of 8.
  static constexpr int kRun = 512;

  // Neighbours of a run's pixels: byte offsets from the first source row, shifts as in PixelPlace.
  struct Tap {
    int32_t offset[kRun];
    uint8_t shift[kRun];
  };

  // Takes all its memory at once.
  Sampler(const DibView& source, uint32_t mode);
  // False when memory ran out.
  explicit operator bool() const { return ready_; }

  // Whether there is a pixel to read, of a depth and in a mode that are known.
  bool Paints() const;

  uint32_t mode() const { return mode_; }
  int channels() const { return channels_; }
  int32_t width() const { return source_.width(); }
  int32_t height() const { return source_.height(); }
  int32_t stride() const { return static_cast<int32_t>(source_.stride()); }

  // The blended color of pixel (x, y) of the new image; in point mode the pixel's value.
  uint32_t SamplePixel(Position column, Position row, int32_t x, int32_t y) const;

  // Whether the runs below serve this source; a smaller one is left to SamplePixel().
  bool FitsRuns() const { return width() >= 4 && height() >= 4; }
  // Bicubic positions whose sixteen samples lie in the source whatever their offsets are. All
  // others are left to SamplePixel().
  static bool Interior(int32_t whole, int32_t size) { return whole >= 1 && whole <= size - 3; }

  // Offsets of bicubic samples; x and y are coordinates in the new image.
  CubicOffsets ColumnOffsets(int32_t x) const;
  CubicOffsets RowOffsets(int32_t y) const;
  // The end of the columns that have the offsets of column x.
  int32_t EndOfOffsets(int32_t x) const;

  // Sets the places of source pixels (columns[i] + column_move, rows[i]); without rows, of row 0.
  void Place(const int32_t* columns, int32_t column_move, const int32_t* rows, int first, int end,
             Tap* tap) const;
  // The colors at the tap's places, `row_move` rows further up.
  void Fetch(const Tap& tap, int32_t row_move, int first, int end, uint32_t* colors) const;

  // Stores colors [first, end) as pixels of `row`, whose first pixel is that of the run. The pixels
  // before and behind them in an indexed image's run of `count` get the highest index.
  void Store(const uint32_t* colors, int first, int end, int count, uint8_t* row);

 private:
  uint32_t ColorAt(int32_t column, int32_t row) const;
  uint32_t BilinearColor(Position column, Position row) const;
  uint32_t BicubicColor(Position column, Position row, int32_t x, int32_t y) const;

  DibView source_;
  uint32_t mode_;
  int channels_ = 3;
  bool ready_ = true;
  uint32_t colors_[256];     // of the indices; the indices themselves in point mode
  uint8_t gray_index_[256];  // gray level to index
  std::optional<NearestEntry> nearest_;
};

}  // namespace ombrilo
