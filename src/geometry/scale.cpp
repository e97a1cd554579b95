// omb_scale: an image in another size.
//
// Pixel x of the new image takes source position x * (W / new width), in single precision and
// without a half-pixel offset. The new image is made in strips of columns: a strip's positions,
// sample places and weights are computed once and serve all its rows. What rows have in common is
// kept from row to row: fetched colors (bilinear) or sums across (bicubic) of the source rows that
// the next row needs again.
#include <algorithm>

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
        functions_(rows::Active()),
        work_(NewScratchBuffer<Work>(1)),
        x_factor_(static_cast<float>(sampler.width()) / static_cast<float>(to.width)),
        y_factor_(static_cast<float>(sampler.height()) / static_cast<float>(to.height)) {}

  explicit operator bool() const { return work_ != nullptr; }

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
        } else if (sampler_.mode() == kPoint) {
          PointRow(row);
        } else if (sampler_.mode() == kBilinear) {
          BilinearRow(row);
        } else {
          BicubicRow(row, y);
        }
        sampler_.Store(work_[0].colors, 0, count_, count_, to_.At(x_, y));
      }
    }
  }

 private:
  struct Work {
    int32_t whole[kRun];
    float fraction[kRun];
    Sampler::Tap taps[4];
    float column_weights[4][kRun];
    float row_weights[4][kRun];    // bilinear: the fraction, in [0]
    uint32_t fetched[2][2][kRun];  // bilinear: by source row (its lowest bit) and tap
    uint32_t samples[4][kRun];     // bicubic: of one source row
    float sums[4][3 * kRun];       // bicubic: by source row (its lowest two bits)
    uint32_t colors[kRun];
  };

  void PrepareColumns() {
    Work& w = work_[0];
    std::fill(std::begin(kept_), std::end(kept_), -1);
    for (int i = 0; i < count_; ++i) {
      const Position position = PositionOf(x_ + i, x_factor_, sampler_.width());
      w.whole[i] = position.whole;
      w.fraction[i] = position.fraction;
    }
    if (!sampler_.FitsRuns()) return;
    // Columns as runs read them: inside the source with all their neighbours.
    int32_t columns[kRun];
    const int32_t first = sampler_.mode() == kBicubic ? 1 : 0;
    const int32_t last = sampler_.width() - static_cast<int32_t>(sampler_.mode());
    for (int i = 0; i < count_; ++i) columns[i] = std::clamp(w.whole[i], first, last);
    if (sampler_.mode() != kBicubic) {
      for (int k = 0; k < static_cast<int>(sampler_.mode()); ++k) {
        sampler_.Place(columns, k, nullptr, 0, count_, &w.taps[k]);
      }
      return;
    }
    for (int i = 0; i < count_;) {
      const int32_t x = x_ + i;
      const CubicOffsets offsets = sampler_.ColumnOffsets(x);
      const int end = static_cast<int>(std::min(sampler_.EndOfOffsets(x) - x_, count_));
      for (int k = 0; k < 4; ++k) {
        sampler_.Place(columns, offsets.at[k], nullptr, i, end, &w.taps[k]);
      }
      i = end;
    }
    float* const weights[4] = {w.column_weights[0], w.column_weights[1], w.column_weights[2],
                               w.column_weights[3]};
    functions_.cubic_weights(w.fraction, static_cast<size_t>(count_), weights);
  }

  void SamplePixels(Position row, int32_t y, int first, int end) {
    Work& w = work_[0];
    for (int i = first; i < end; ++i) {
      w.colors[i] = sampler_.SamplePixel({w.whole[i], w.fraction[i]}, row, x_ + i, y);
    }
  }

  void PointRow(Position row) {
    const int32_t source_row = std::min(row.whole, sampler_.height() - 1);
    if (kept_[0] == source_row) return;
    kept_[0] = source_row;
    sampler_.Fetch(work_[0].taps[0], source_row, 0, count_, work_[0].colors);
  }

  void BilinearRow(Position row) {
    Work& w = work_[0];
    const int32_t first_row = std::min(row.whole, sampler_.height() - 2);
    for (int32_t source_row = first_row; source_row <= first_row + 1; ++source_row) {
      const int slot = source_row & 1;
      if (kept_[slot] == source_row) continue;
      kept_[slot] = source_row;
      for (int k = 0; k < 2; ++k) {
        sampler_.Fetch(w.taps[k], source_row, 0, count_, w.fetched[slot][k]);
      }
    }
    std::fill(w.row_weights[0], w.row_weights[0] + count_, row.fraction);
    const auto& lower = w.fetched[first_row & 1];
    const auto& upper = w.fetched[(first_row + 1) & 1];
    const uint32_t* const taps[4] = {lower[0], lower[1], upper[0], upper[1]};
    functions_.bilinear(taps, w.fraction, w.row_weights[0], sampler_.channels(),
                        static_cast<size_t>(count_), w.colors);
  }

  void BicubicRow(Position row, int32_t y) {
    Work& w = work_[0];
    if (!Sampler::Interior(row.whole, sampler_.height())) {
      SamplePixels(row, y, 0, count_);
      return;
    }
    const size_t count = static_cast<size_t>(count_);
    const CubicOffsets offsets = sampler_.RowOffsets(y);
    const uint32_t* const samples[4] = {w.samples[0], w.samples[1], w.samples[2], w.samples[3]};
    const float* const column_weights[4] = {w.column_weights[0], w.column_weights[1],
                                            w.column_weights[2], w.column_weights[3]};
    const float* sums[4];
    float weights[4];
    float* const each_weight[4] = {weights, weights + 1, weights + 2, weights + 3};
    functions_.cubic_weights(&row.fraction, 1, each_weight);
    for (int j = 0; j < 4; ++j) {
      // Offsets are within four of each other, so the rows of one pixel never share a slot.
      const int32_t source_row = row.whole + offsets.at[j];
      const int slot = source_row & 3;
      if (kept_[slot] != source_row) {
        kept_[slot] = source_row;
        for (int k = 0; k < 4; ++k) sampler_.Fetch(w.taps[k], source_row, 0, count_, w.samples[k]);
        functions_.cubic_across(samples, column_weights, sampler_.channels(), count, kRun,
                                w.sums[slot]);
      }
      sums[j] = w.sums[slot];
      std::fill(w.row_weights[j], w.row_weights[j] + count_, weights[j]);
    }
    const float* const row_weights[4] = {w.row_weights[0], w.row_weights[1], w.row_weights[2],
                                         w.row_weights[3]};
    functions_.cubic_down(sums, row_weights, sampler_.channels(), count, kRun, w.colors);
    // Positions ascend, so the columns that need corrections stand at the ends.
    int first = 0, end = count_;
    while (first < end && !Sampler::Interior(w.whole[first], sampler_.width())) ++first;
    while (first < end && !Sampler::Interior(w.whole[end - 1], sampler_.width())) --end;
    SamplePixels(row, y, 0, first);
    SamplePixels(row, y, end, count_);
  }

  Sampler& sampler_;
  const NewRows to_;
  const rows::RowFunctions& functions_;
  Buffer<Work> work_;
  const float x_factor_, y_factor_;
  int32_t x_ = 0;
  int32_t count_ = 0;
  int32_t kept_[4];  // source rows that the slots hold; -1 none
};

}  // namespace

uint32_t Scale(PackedDib** image, uint32_t width, uint32_t height, uint32_t mode,
               Resampling resampling) {
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source) return 0;
  // The same size is "not done".
  if (width == omb_DIBWidth(*image) && height == omb_DIBHeight(*image)) return 0;
  NewBlock block = NewBlock::Resized(*source, width, height);
  if (!block) return 0;
  // A core header gets the width as 32 bits too: its height field ends as the width's high half.
  StoreU32(block.bytes() + kInfoWidth, width);

  Sampler sampler(*source, mode);
  if (!sampler) return 0;
  if (width != 0 && height != 0 && sampler.Paints()) {
    // Not block.dib(): a core header no longer tells the height.
    const NewRows rows = {block.bytes() + source->prefix_size(),
                          static_cast<size_t>(StrideOf(width, source->bit_count())),
                          static_cast<int32_t>(width), static_cast<int32_t>(height),
                          source->bit_count()};
    Scaler scaler(sampler, rows);
    if (!scaler) return 0;
    scaler.Run(resampling);
  }
  block.Replace(image);
  return 1;
}

}  // namespace ombrilo

uint32_t omb_scale(PackedDib** image, uint32_t width, uint32_t height, uint32_t mode) {
  return ombrilo::Scale(image, width, height, mode, ombrilo::Resampling::kRuns);
}
