// What scaling and rotation share: the source as pixels of bytes, the pixels that results become,
// and the corrections at the borders.
//
// ResampleMode says which source pixels around a fractional position are read and how they are
// blended. Row functions do it for runs, on one or three bytes of each pixel: 24-bit colors and
// gray levels as they are in the image; other indices decoded (into indices of one byte in point
// mode, otherwise into colors of the table), and results encoded again.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "core/indexed_colors.h"
#include "core/packed_dib.h"
#include "rows/row_functions.h"

namespace ombrilo {

// Any other value writes no pixel.
enum ResampleMode : uint32_t { kPoint = 1, kBilinear = 2, kBicubic = 3 };

// Source coordinates that may be read on an axis, or the ends of a run.
struct Span {
  int32_t first, end;
  bool empty() const { return first >= end; }
  bool Holds(int32_t at) const { return at >= first && at < end; }
  int32_t Limit(int32_t at) const { return std::clamp(at, first, end - 1); }
};

class Sampler {
 public:
  // Takes all its memory.
  Sampler(const DibView& source, uint32_t mode);
  // False when memory ran out.
  explicit operator bool() const { return ready_; }

  // Whether there is a pixel to read, of a depth and in a mode that are known.
  bool Paints() const;

  ResampleMode mode() const { return static_cast<ResampleMode>(mode_); }
  int32_t width() const { return source_.width(); }
  int32_t height() const { return source_.height(); }

  // Bytes of a sampled pixel: 1 or 3.
  int32_t channels() const { return channels_; }
  // Whether these are the image's own, and results are pixels. Otherwise Decode() and Encode().
  bool in_place() const { return in_place_; }
  const DibView& source() const { return source_; }

  // Where a pixel's neighbours are all in the source, so that row functions may read them. Modes 1
  // and 2 prescribe that positions outside are moved there; in mode 3 BicubicPixel() takes them.
  // Empty only in mode 3.
  Span Inner(int32_t size) const;
  // How many neighbours there are before a position and from it on.
  int32_t before() const { return mode_ == kBicubic ? 1 : 0; }
  int32_t after() const { return mode_ == kBicubic ? 3 : static_cast<int32_t>(mode_); }

  // Columns [first, end) of a source row, and the last one once more: the only column of an image
  // is its own right neighbour. `first` is a multiple of 8.
  void Decode(int32_t row, int32_t first, int32_t end, uint8_t* to) const;
  // Pixels of a row of the new image from column `first` on.
  void Encode(const uint8_t* sampled, int32_t first, int32_t count, uint8_t* row);

  // The four source rows of a pixel in row y of the new image, at row `whole` of the source.
  struct CubicRows {
    int32_t at[4];
  };
  CubicRows RowsOf(int32_t whole, int32_t y) const;
  // The sums of a run's neighbours in one row, as the row function cubic_across gives them. The run
  // starts at column x of the new image; places are those of the leftmost neighbours.
  void SumAcross(const simd::PixelPlaces& places, int32_t x, const float* const weights[4],
                 size_t plane, size_t count, float* sums) const;
  // A pixel at any position, sampled with these weights.
  struct CubicPixel {
    int32_t column;  // in the source, or outside
    int32_t x;       // in the new image
    CubicRows rows;
    float across[4], down[4];
  };
  void SampleBicubic(const CubicPixel& pixel, uint8_t* to) const;

 private:
  const uint8_t* ColorAt(int32_t column, const uint8_t* row) const;

  DibView source_;
  uint32_t mode_;
  bool ready_ = true;
  bool in_place_;
  int32_t channels_;
  std::optional<IndexedColors> colors_;  // indexed images, modes 2 and 3
};

}  // namespace ombrilo
