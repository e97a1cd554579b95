// omb_rotate: an image turned about its center.
//
// Positive right angles move pixels exactly. Any other angle resamples: each row of the new image
// crosses the source along a straight line, so the pixels that lie in the source are one run.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/replacement.h"
#include "geometry/resample.h"
#include "geometry/resampling.h"
#include "geometry/right_angles.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr int kRun = Sampler::kRun;
constexpr int32_t kStrip = 496;  // a run's pixels at most: few enough for the first-level cache

// Sizes and positions are computed in single precision throughout.
struct Turn {
  float c, s;  // cosine and sine
  int64_t width, height;

  Turn(float degrees, const DibHeader& source) {
    const double theta = degrees / 180.0 * 3.1415926;
    c = static_cast<float>(std::cos(theta));
    s = static_cast<float>(std::sin(theta));
    const float w = static_cast<float>(source.width), h = static_cast<float>(source.height);
    const float half = 0.5f;
    width =
        static_cast<int64_t>(std::max(std::fabs(w * c - h * s), std::fabs(w * c + h * s)) + half);
    height =
        static_cast<int64_t>(std::max(std::fabs(h * c - w * s), std::fabs(h * c + w * s)) + half);
  }
};

class Rotator {
 public:
  Rotator(Sampler& sampler, const Turn& turn, uint16_t bit_count)
      : sampler_(sampler),
        turn_(turn),
        bit_count_(bit_count),
        functions_(rows::Active()),
        work_(NewScratchBuffer<Work>(1)) {}

  explicit operator bool() const { return work_ != nullptr; }

  // Pixels that come from outside the source are 255, and so is the padding.
  void Run(Resampling resampling, uint8_t* new_rows, size_t stride) {
    const bool runs = resampling == Resampling::kRuns && sampler_.FitsRuns();
    const Sampler::Range columns = sampler_.Inner(sampler_.width());
    const Sampler::Range lines = sampler_.Inner(sampler_.height());
    const int32_t width = static_cast<int32_t>(turn_.width);
    const int32_t height = static_cast<int32_t>(turn_.height);
    for (int32_t y = 0; y < height; ++y) {
      uint8_t* row = new_rows + static_cast<size_t>(y) * stride;
      std::memset(row, 255, stride);
      for (int32_t x = 0, count; x < width; x += count) {
        count = std::min(kStrip, width - x);
        Work& w = work_[0];
        Locate(x, y, count);
        int first = 0, end = count;
        while (first < end && !InSource(first)) ++first;
        while (first < end && !InSource(end - 1)) --end;
        if (first == end) continue;
        const size_t inside = static_cast<size_t>(end - first);
        functions_.split_positions(w.column + first, inside, columns.low, columns.high,
                                   w.ix + first, w.inner_ix + first, w.dx + first);
        functions_.split_positions(w.row + first, inside, lines.low, lines.high, w.iy + first,
                                   w.inner_iy + first, w.dy + first);
        if (runs) {
          SampleRun(x, y, first, end);
        } else {
          for (int i = first; i < end; ++i) SamplePixel(x, y, i);
        }
        sampler_.Store(w.colors, first, end, count, row + static_cast<size_t>(x) * bit_count_ / 8);
      }
    }
  }

 private:
  struct Work {
    float column[kRun], row[kRun];  // positions in the source
    int32_t ix[kRun], iy[kRun];
    float dx[kRun], dy[kRun];
    int32_t inner_ix[kRun], inner_iy[kRun];
    Sampler::Taps taps;
    Sampler::Samples samples[2];
    float column_weights[4][kRun], row_weights[4][kRun];
    float sums[4][3 * kRun];
    uint32_t colors[kRun];
  };

  void Locate(int32_t x, int32_t y, int count) {
    // Halves are whole numbers.
    const int32_t u = x - static_cast<int32_t>(turn_.width) / 2;
    const float v = static_cast<float>(static_cast<int32_t>(turn_.height) / 2 - y);
    const size_t n = static_cast<size_t>(count);
    functions_.line_positions(u, turn_.c, v * turn_.s, static_cast<float>(sampler_.width() / 2), n,
                              work_[0].column);
    functions_.line_positions(u, turn_.s, -(v * turn_.c), static_cast<float>(sampler_.height() / 2),
                              n, work_[0].row);
  }

  // Positions above -1 truncate to 0 and belong to the first column or row.
  bool InSource(int i) const {
    const double column = work_[0].column[i], row = work_[0].row[i];
    return column > -1 && column < sampler_.width() && row > -1 && row < sampler_.height();
  }

  void SamplePixel(int32_t x, int32_t y, int i) {
    Work& w = work_[0];
    w.colors[i] = sampler_.SamplePixel({w.ix[i], w.dx[i]}, {w.iy[i], w.dy[i]}, x + i, y);
  }

  void SampleRun(int32_t x, int32_t y, int first, int end) {
    Work& w = work_[0];
    sampler_.FindNeighbours(w.inner_ix, w.inner_iy, x, first, end, &w.taps);
    if (sampler_.mode() == kBicubic) {
      BicubicRun(x, y, first, end);
      return;
    }
    sampler_.Fetch(w.taps, 0, first, end, &w.samples[0]);
    if (sampler_.mode() == kPoint) {
      std::copy(w.samples[0].tap[0] + first, w.samples[0].tap[0] + end, w.colors + first);
      return;
    }
    sampler_.Fetch(w.taps, 1, first, end, &w.samples[1]);
    sampler_.Blend(w.samples[0], w.samples[1], w.dx, w.dy, false, first, end, w.colors);
  }

  void BicubicRun(int32_t x, int32_t y, int first, int end) {
    Work& w = work_[0];
    float *column_weights[4], *row_weights[4], *all_row_weights[4];
    for (int k = 0; k < 4; ++k) {
      column_weights[k] = w.column_weights[k] + first;
      row_weights[k] = w.row_weights[k] + first;
      all_row_weights[k] = w.row_weights[k];
    }
    const size_t inside = static_cast<size_t>(end - first);
    functions_.cubic_weights(w.dx + first, inside, column_weights);
    functions_.cubic_weights(w.dy + first, inside, row_weights);
    const CubicOffsets row_offsets = sampler_.RowOffsets(y);
    const float* sums[4];
    for (int j = 0; j < 4; ++j) {
      sampler_.Fetch(w.taps, row_offsets.at[j], first, end, &w.samples[0]);
      sampler_.SumAcross(w.samples[0], x, w.column_weights, first, end, w.sums[j]);
      sums[j] = w.sums[j];
    }
    sampler_.SumDown(sums, all_row_weights, false, first, end, w.colors);
    // Those that need no correction are one run, too.
    const auto corrected = [&](int i) {
      return w.inner_ix[i] != w.ix[i] || w.inner_iy[i] != w.iy[i];
    };
    for (; first < end && corrected(first); ++first) SamplePixel(x, y, first);
    for (; first < end && corrected(end - 1); --end) SamplePixel(x, y, end - 1);
  }

  Sampler& sampler_;
  const Turn turn_;
  const uint16_t bit_count_;
  const rows::RowFunctions& functions_;
  Buffer<Work> work_;
};

}  // namespace

uint32_t Rotate(PackedDib** image, float degrees, uint32_t mode, Resampling resampling) {
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source || !(degrees >= -2147483648.0f && degrees < 2147483648.0f)) return 0;
  const int32_t full_turns = static_cast<int32_t>(degrees) / 360;
  const float rest = degrees - 360.0f * static_cast<float>(full_turns);
  const double angle = rest;
  if (std::fabs(angle) < 0.01) return 0;
  // Negative right angles resample on purpose.
  for (int quarters = 1; quarters <= 3; ++quarters) {
    if (std::fabs(angle - 90 * quarters) < 0.01) return TurnByQuarters(image, *source, quarters);
  }

  const Turn turn(rest, source->header());
  NewBlock block =
      NewBlock::Resized(*source, turn.width, turn.height, NewBlock::Rows::kPixelsComeNext);
  if (!block) return 0;
  Sampler sampler(*source, mode);
  Rotator rotator(sampler, turn, source->bit_count());
  if (!sampler || !rotator) return 0;
  // Not block.dib(): a core header may have cut the size to 16 bits.
  uint8_t* new_rows = block.bytes() + source->prefix_size();
  const size_t stride = static_cast<size_t>(StrideOf(turn.width, source->bit_count()));
  if (sampler.Paints()) {
    rotator.Run(resampling, new_rows, stride);
  } else {
    std::memset(new_rows, 255, stride * static_cast<size_t>(turn.height));
  }
  block.Replace(image);
  return 1;
}

}  // namespace ombrilo

uint32_t omb_rotate(PackedDib** image, float degrees, uint32_t mode) {
  return ombrilo::Rotate(image, degrees, mode, ombrilo::Resampling::kRuns);
}
