// What scaling and rotation share: how source pixels are decoded and results encoded, and the
// corrections at the borders.
//
// The mode says which source pixels around a fractional position are read and how they are blended.
// Row functions do this for runs of pixels of one or three bytes. 24-bit colors and gray levels are
// sampled as they are in the image. Other indices are decoded first, into indices of one byte in
// point mode and otherwise into colors of the table, and results are encoded again.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "core/indexed_colors.h"
#include "core/packed_dib.h"
#include "rows/row_functions.h"

namespace ombrilo {

// The numbers from `first` up to `end`: coordinates on an axis of the source, or pixels of a run.
struct Span {
  int32_t first, end;
  bool empty() const { return first >= end; }
  bool Holds(int32_t at) const { return at >= first && at < end; }
  int32_t Limit(int32_t at) const { return std::clamp(at, first, end - 1); }
};

class Sampler {
 public:
  // Takes all its memory, for a new image of so many pixels.
  Sampler(const DibView& source, uint32_t mode, uint64_t pixels);
  // False when memory ran out.
  explicit operator bool() const { return ready_; }

  // Whether there are pixels to read, and depth and mode are known.
  bool Paints() const;

  uint32_t mode() const { return mode_; }  // one of OmbResampling if Paints()
  int32_t width() const { return source_.width(); }
  int32_t height() const { return source_.height(); }

  // Bytes of a sampled pixel: 1 or 3.
  int32_t channels() const { return channels_; }
  // Whether pixels are sampled, and results stored, as they are in the image. Otherwise sources are
  // decoded with Decode() and results encoded with Encode().
  bool in_place() const { return in_place_; }
  const DibView& source() const { return source_; }

  // The positions on an axis whose neighbours are all in the source, so that row functions may read
  // them. In modes 1 and 2, other positions are moved to the nearest of these, which is the
  // contract; in mode 3, SampleBicubic() takes them. Empty only in mode 3.
  Span Inner(int32_t size) const;
  // How many neighbours there are before a position and from it on.
  int32_t before() const { return mode_ == OMB_RESAMPLE_BICUBIC ? 1 : 0; }
  int32_t after() const { return mode_ == OMB_RESAMPLE_BICUBIC ? 3 : static_cast<int32_t>(mode_); }

  // Decodes columns [first, end) of a source row, and the last one once more: the only column of an
  // image is its own right neighbour. `first` is a multiple of 8.
  void Decode(int32_t row, int32_t first, int32_t end, uint8_t* to) const;
  // Encodes pixels of a row of the new image from column `first` on.
  void Encode(const uint8_t* sampled, int32_t first, int32_t count, uint8_t* row);

  // The four source rows of a pixel in row y of the new image, at row `whole` of the source.
  struct CubicRows {
    int32_t at[4];
  };
  CubicRows RowsOf(int32_t whole, int32_t y) const;
  // The weighted sums of a run's neighbours in one row, as the row function cubic_across stores
  // them. The run starts at column x of the new image; places are those of the leftmost neighbours.
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
  const simd::RowFunctions& functions_;
  DibView source_;
  // Of the source, which derives them from its header each time: too often for single pixels.
  const uint8_t* rows_;
  size_t stride_;
  uint32_t mode_;
  bool ready_ = true;
  bool in_place_;
  int32_t channels_;
  std::optional<IndexedColors> colors_;  // indexed images, modes 2 and 3
};

}  // namespace ombrilo
