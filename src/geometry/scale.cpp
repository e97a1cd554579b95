// omb_scale: an image in another size.
//
// Pixel x of the new image takes source position x * (W / new width), in single precision and
// without a half-pixel offset. The new image is made in strips of columns: a strip's positions,
// sample places and weights are computed once and serve all its rows. What rows have in common is
// kept from row to row: sums across (bicubic), or fetched colors (bilinear, where bytes are not
// blended as they are) of the source rows that the next row needs again.
#include <algorithm>
#include <cstring>

#include "core/bytes.h"
#include "core/replacement.h"
#include "geometry/resample.h"
#include "geometry/resampling.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr int kRun = Sampler::kRun;

// Positions may reach `size` itself by rounding.
Position PositionOf(int32_t at, float factor, int32_t size) {
  const float position = static_cast<float>(at) * factor;
  if (position >= 2147483648.0f) return {size, 0};
  const int32_t whole = static_cast<int32_t>(position);
  return {std::min(whole, size), position - static_cast<float>(whole)};
}

struct NewRows {
  uint8_t* first;
  size_t stride;
  int32_t width, height;
  uint16_t bit_count;

  uint8_t* At(int32_t x, int32_t y) const {
    return first + static_cast<size_t>(y) * stride + static_cast<size_t>(x) * bit_count / 8;
  }
};

class Scaler {
 public:
  Scaler(Sampler& sampler, const NewRows& to)
      : sampler_(sampler),
        to_(to),
        functions_(simd::Active()),
        x_factor_(static_cast<float>(sampler.width()) / static_cast<float>(to.width)),
        y_factor_(static_cast<float>(sampler.height()) / static_cast<float>(to.height)) {}

  explicit operator bool() const { return static_cast<bool>(work_); }

  void Run(Resampling resampling) {
    const bool runs = resampling == Resampling::kRuns && sampler_.FitsRuns();
    for (int32_t x = 0; x < to_.width; x += count_) {
      x_ = x;
      count_ = std::min(kRun, to_.width - x);
      PrepareColumns();
      for (int32_t y = 0; y < to_.height; ++y) {
        const Position row = PositionOf(y, y_factor_, sampler_.height());
        if (!runs) {
          SamplePixels(row, y, 0, count_);
        } else if (sampler_.Picks()) {
          PickRow(row, y);
          continue;
        } else if (sampler_.mode() == kPoint) {
          PointRow(row);
        } else if (sampler_.mode() == kBilinear && sampler_.BlendsBytes()) {
          Work& w = *work_;
          sampler_.BlendBytes(w.taps, sampler_.Inner(sampler_.height()).Limit(row.whole),
                              w.fraction, &row.fraction, true, 0, count_, to_.At(x_, y));
          continue;
        } else if (sampler_.mode() == kBilinear) {
          BilinearRow(row);
        } else {
          BicubicRow(row, y);
          continue;
        }
        sampler_.Store(NewPixels(runs), 0, count_, count_, to_.At(x_, y));
      }
    }
  }

 private:
  struct Work {
    int32_t whole[kRun];
    float fraction[kRun];
    Sampler::Taps taps;
    float column_weights[4][kRun];
    Sampler::Samples samples[2];  // bilinear: by source row (its lowest bit)
    float sums[4][3 * kRun];      // bicubic: by source row (its lowest two bits)
    uint32_t colors[kRun];
  };

  void PrepareColumns() {
    Work& w = *work_;
    std::fill(std::begin(kept_), std::end(kept_), -1);
    for (int i = 0; i < count_; ++i) {
      const Position position = PositionOf(x_ + i, x_factor_, sampler_.width());
      w.whole[i] = position.whole;
      w.fraction[i] = position.fraction;
    }
    if (!sampler_.FitsRuns()) return;
    int32_t columns[kRun];
    const Sampler::Range inner = sampler_.Inner(sampler_.width());
    for (int i = 0; i < count_; ++i) columns[i] = inner.Limit(w.whole[i]);
    sampler_.FindNeighbours(columns, nullptr, x_, 0, count_, &w.taps);
    if (sampler_.mode() == kBicubic) {
      float* const weights[4] = {w.column_weights[0], w.column_weights[1], w.column_weights[2],
                                 w.column_weights[3]};
      functions_.cubic_weights(w.fraction, static_cast<size_t>(count_), weights);
      // Positions ascend, so the columns that need corrections stand at the ends.
      inner_ = 0;
      inner_end_ = count_;
      while (inner_ < inner_end_ && columns[inner_] != w.whole[inner_]) ++inner_;
      while (inner_ < inner_end_ && columns[inner_end_ - 1] != w.whole[inner_end_ - 1]) {
        --inner_end_;
      }
    }
  }

  void SamplePixels(Position row, int32_t y, int first, int end) {
    Work& w = *work_;
    for (int i = first; i < end; ++i) {
      w.colors[i] = sampler_.SamplePixel({w.whole[i], w.fraction[i]}, row, x_ + i, y);
    }
  }

  // Whether the slot still holds what a source row gives; from now on it does. Rows of one pixel
  // never share a slot: they are neighbours, and there is a slot for each.
  bool Keep(int slot, int32_t source_row) {
    const bool kept = kept_[slot] == source_row;
    kept_[slot] = source_row;
    return kept;
  }

  // In point mode the samples are the pixels.
  const uint32_t* NewPixels(bool runs) const {
    return runs && sampler_.mode() == kPoint ? (*work_).samples[0].tap[0] : (*work_).colors;
  }

  void PickRow(Position row, int32_t y) {
    const int32_t source_row = sampler_.Inner(sampler_.height()).Limit(row.whole);
    if (Keep(0, source_row)) {
      std::memcpy(to_.At(x_, y), to_.At(x_, y - 1),
                  (static_cast<size_t>(count_) * to_.bit_count + 7) / 8);
    } else {
      sampler_.Pick((*work_).taps, source_row, 0, count_, to_.At(x_, y));
    }
  }

  void PointRow(Position row) {
    const int32_t source_row = sampler_.Inner(sampler_.height()).Limit(row.whole);
    if (Keep(0, source_row)) return;
    sampler_.Fetch((*work_).taps, source_row, 0, count_, &(*work_).samples[0]);
  }

  void BilinearRow(Position row) {
    Work& w = *work_;
    const int32_t lower = sampler_.Inner(sampler_.height()).Limit(row.whole);
    for (const int32_t source_row : {lower, lower + 1}) {
      if (Keep(source_row & 1, source_row)) continue;
      sampler_.Fetch(w.taps, source_row, 0, count_, &w.samples[source_row & 1]);
    }
    sampler_.Blend(w.samples[lower & 1], w.samples[(lower + 1) & 1], w.fraction, &row.fraction,
                   true, 0, count_, w.colors);
  }

  void BicubicRow(Position row, int32_t y) {
    Work& w = *work_;
    if (sampler_.Inner(sampler_.height()).Limit(row.whole) != row.whole) {
      SamplePixels(row, y, 0, count_);
      sampler_.Store(w.colors, 0, count_, count_, to_.At(x_, y));
      return;
    }
    const CubicOffsets offsets = sampler_.RowOffsets(y);
    float weights[4];
    float* const each_weight[4] = {weights, weights + 1, weights + 2, weights + 3};
    functions_.cubic_weights(&row.fraction, 1, each_weight);
    const float* sums[4];
    for (int j = 0; j < 4; ++j) {
      const int32_t source_row = row.whole + offsets.at[j];
      sums[j] = w.sums[source_row & 3];
      if (!Keep(source_row & 3, source_row)) {
        if (sampler_.BlendsBytes()) {
          sampler_.SumBytesAcross(w.taps, source_row, x_, w.column_weights, true, 0, count_,
                                  w.sums[source_row & 3]);
        } else {
          sampler_.Fetch(w.taps, source_row, 0, count_, &w.samples[0]);
          sampler_.SumAcross(w.samples[0], x_, w.column_weights, 0, count_, w.sums[source_row & 3]);
        }
      }
    }
    uint8_t* const to = to_.At(x_, y);
    if (sampler_.BlendsBytes()) {
      sampler_.SumBytesDown(sums, each_weight, true, 0, count_, to);
      SamplePixels(row, y, 0, inner_);
      sampler_.Store(w.colors, 0, inner_, count_, to);
      SamplePixels(row, y, inner_end_, count_);
      sampler_.Store(w.colors, inner_end_, count_, count_, to);
    } else {
      sampler_.SumDown(sums, each_weight, true, 0, count_, w.colors);
      SamplePixels(row, y, 0, inner_);
      SamplePixels(row, y, inner_end_, count_);
      sampler_.Store(w.colors, 0, count_, count_, to);
    }
  }

  Sampler& sampler_;
  const NewRows to_;
  const simd::RowFunctions& functions_;
  AlignedScratch<Work> work_;
  const float x_factor_, y_factor_;
  int32_t x_ = 0;
  int32_t count_ = 0;
  int inner_ = 0, inner_end_ = 0;  // bicubic: the columns that need no correction
  int32_t kept_[4];                // source rows that the slots hold; -1 none
};

}  // namespace

uint32_t Scale(PackedDib** image, uint32_t width, uint32_t height, uint32_t mode,
               Resampling resampling) {
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source) return 0;
  // The same size is "not done".
  if (width == omb_DIBWidth(*image) && height == omb_DIBHeight(*image)) return 0;
  Sampler sampler(*source, mode);
  if (!sampler) return 0;
  NewBlock block = NewBlock::Resized(
      *source, width, height,
      sampler.Paints() ? NewBlock::Rows::kPixelsComeNext : NewBlock::Rows::kZeroed);
  if (!block) return 0;
  // A core header gets the width as 32 bits too: its height field ends as the width's high half.
  StoreU32(block.bytes() + kInfoWidth, width);

  if (width != 0 && height != 0 && sampler.Paints()) {
    // Not block.dib(): a core header no longer tells the height.
    const NewRows new_rows = {block.bytes() + source->prefix_size(),
                              static_cast<size_t>(StrideOf(width, source->bit_count())),
                              static_cast<int32_t>(width), static_cast<int32_t>(height),
                              source->bit_count()};
    Scaler scaler(sampler, new_rows);
    if (!scaler || !sampler.DecodeRows()) return 0;
    scaler.Run(resampling);
  }
  return block.Replace(image);
}

}  // namespace ombrilo

uint32_t omb_scale(PackedDib** image, uint32_t width, uint32_t height, uint32_t mode) {
  return ombrilo::Scale(image, width, height, mode, ombrilo::Resampling::kRuns);
}
