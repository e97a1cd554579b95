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

  // Pixels that come from outside the source keep their value.
  void Run(Resampling resampling, uint8_t* new_rows, size_t stride) {
    const bool runs = resampling == Resampling::kRuns && sampler_.FitsRuns();
    const int32_t width = static_cast<int32_t>(turn_.width);
    const int32_t height = static_cast<int32_t>(turn_.height);
    for (int32_t y = 0; y < height; ++y) {
      uint8_t* row = new_rows + static_cast<size_t>(y) * stride;
      for (int32_t x = 0, count; x < width; x += count) {
        count = std::min(kRun, width - x);
        Work& w = work_[0];
        Locate(x, y, count);
        int first = 0, end = count;
        while (first < end && !InSource(first)) ++first;
        while (first < end && !InSource(end - 1)) --end;
        if (first == end) continue;
        const size_t inside = static_cast<size_t>(end - first);
        functions_.split_positions(w.column + first, inside, w.ix + first, w.dx + first);
        functions_.split_positions(w.row + first, inside, w.iy + first, w.dy + first);
        if (!runs) {
          for (int i = first; i < end; ++i) SamplePixel(x, y, i);
        } else if (sampler_.mode() == kPoint) {
          sampler_.Place(w.ix, 0, w.iy, first, end, &w.taps[0]);
          Fetch(0, 0, first, end, w.colors);
        } else if (sampler_.mode() == kBilinear) {
          BilinearRun(first, end);
        } else {
          BicubicRun(x, y, first, end);
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
    Sampler::Tap taps[4];
    float column_weights[4][kRun], row_weights[4][kRun];
    uint32_t samples[4][kRun];
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

  void Fetch(int tap, int32_t row_move, int first, int end, uint32_t* colors) {
    sampler_.Fetch(work_[0].taps[tap], row_move, first, end, colors);
  }

  void BilinearRun(int first, int end) {
    Work& w = work_[0];
    for (int i = first; i < end; ++i) {
      w.inner_ix[i] = std::min(w.ix[i], sampler_.width() - 2);
      w.inner_iy[i] = std::min(w.iy[i], sampler_.height() - 2);
    }
    for (int k = 0; k < 2; ++k) {
      sampler_.Place(w.inner_ix, k, w.inner_iy, first, end, &w.taps[k]);
      Fetch(k, 0, first, end, w.samples[k]);
      Fetch(k, 1, first, end, w.samples[2 + k]);
    }
    const uint32_t* const samples[4] = {w.samples[0] + first, w.samples[1] + first,
                                        w.samples[2] + first, w.samples[3] + first};
    functions_.bilinear(samples, w.dx + first, w.dy + first, sampler_.channels(),
                        static_cast<size_t>(end - first), w.colors + first);
  }

  void BicubicRun(int32_t x, int32_t y, int first, int end) {
    Work& w = work_[0];
    const size_t inside = static_cast<size_t>(end - first);
    for (int i = first; i < end; ++i) {
      w.inner_ix[i] = std::clamp(w.ix[i], 1, sampler_.width() - 3);
      w.inner_iy[i] = std::clamp(w.iy[i], 1, sampler_.height() - 3);
    }
    for (int i = first; i < end;) {
      const CubicOffsets offsets = sampler_.ColumnOffsets(x + i);
      const int next = static_cast<int>(std::min(sampler_.EndOfOffsets(x + i) - x, end));
      for (int k = 0; k < 4; ++k) {
        sampler_.Place(w.inner_ix, offsets.at[k], w.inner_iy, i, next, &w.taps[k]);
      }
      i = next;
    }
    const CubicOffsets row_offsets = sampler_.RowOffsets(y);
    const uint32_t* samples[4];
    const float* sums[4];
    float *column_weights[4], *row_weights[4];
    for (int k = 0; k < 4; ++k) {
      samples[k] = w.samples[k] + first;
      sums[k] = w.sums[k] + first;
      column_weights[k] = w.column_weights[k] + first;
      row_weights[k] = w.row_weights[k] + first;
    }
    functions_.cubic_weights(w.dx + first, inside, column_weights);
    functions_.cubic_weights(w.dy + first, inside, row_weights);
    for (int j = 0; j < 4; ++j) {
      for (int k = 0; k < 4; ++k) Fetch(k, row_offsets.at[j], first, end, w.samples[k]);
      functions_.cubic_across(samples, column_weights, sampler_.channels(), inside, kRun,
                              w.sums[j] + first);
    }
    functions_.cubic_down(sums, row_weights, sampler_.channels(), inside, kRun, w.colors + first);
    for (int i = first; i < end; ++i) {
      if (w.inner_ix[i] != w.ix[i] || w.inner_iy[i] != w.iy[i]) SamplePixel(x, y, i);
    }
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
  NewBlock block = NewBlock::Resized(*source, turn.width, turn.height);
  if (!block) return 0;
  Sampler sampler(*source, mode);
  Rotator rotator(sampler, turn, source->bit_count());
  if (!sampler || !rotator) return 0;
  // Not block.dib(): a core header may have cut the size to 16 bits.
  uint8_t* rows = block.bytes() + source->prefix_size();
  const size_t stride = static_cast<size_t>(StrideOf(turn.width, source->bit_count()));
  std::memset(rows, 255, stride * static_cast<size_t>(turn.height));
  if (turn.height >= 1 && sampler.Paints()) rotator.Run(resampling, rows, stride);
  block.Replace(image);
  return 1;
}

}  // namespace ombrilo

uint32_t omb_rotate(PackedDib** image, float degrees, uint32_t mode) {
  return ombrilo::Rotate(image, degrees, mode, ombrilo::Resampling::kRuns);
}
