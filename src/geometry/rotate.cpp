// omb_rotate: an image turned about its center.
//
// Positive right angles move pixels exactly. Any other angle resamples: each row of the new image
// crosses the source along a straight line, so the pixels that lie in the source are one run.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "core/elementary.h"
#include "core/replacement.h"
#include "geometry/resample.h"
#include "geometry/resampling.h"
#include "geometry/right_angles.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr int kRun = Sampler::kRun;
constexpr int32_t kStrip = 192;  // a run's pixels at most: few enough for the first-level cache
// Lines of the source that a later row needs are asked for this many rows before: they stand one
// below the other, which no prefetcher foresees.
constexpr int kRowsAhead = 8;
// Positions above -1 truncate to 0 and belong to the first column or row.
constexpr float kAboveMinusOne = -0x1.fffffep-1f;

// Sizes and positions are computed in single precision throughout.
struct Turn {
  float c, s;  // cosine and sine
  int64_t width, height;

  Turn(float degrees, const DibHeader& source) {
    const double theta = degrees / 180.0 * 3.1415926;
    c = static_cast<float>(Cosine(theta));
    s = static_cast<float>(Sine(theta));
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
        functions_(simd::Active()),
        ahead_(static_cast<int32_t>(kRowsAhead * turn.c) * ptrdiff_t{sampler.stride()} -
               static_cast<int32_t>(kRowsAhead * turn.s) * bit_count / 8) {}

  explicit operator bool() const { return static_cast<bool>(work_); }

  // Pixels that come from outside the source are 255, and so is the padding.
  void Run(Resampling resampling, uint8_t* new_rows, size_t stride) {
    const bool runs = resampling == Resampling::kRuns && sampler_.FitsRuns();
    const int32_t height = static_cast<int32_t>(turn_.height);
    for (int32_t y = 0; y < height; ++y) {
      uint8_t* const row = new_rows + static_cast<size_t>(y) * stride;
      std::memset(row, 255, stride);
      FindRow(y);
      const Span inside = Between(kAboveMinusOne, 0);
      if (sampler_.mode() == kBicubic) uncorrected_ = Between(1, 2);
      for (int32_t x = inside.first, end; x < inside.end; x = end) {
        const int32_t strip = x & ~7;
        end = std::min(strip + kStrip, inside.end);
        uint8_t* const to = row + static_cast<size_t>(strip) * bit_count_ / 8;
        if (runs) {
          SampleRun(strip, y, x - strip, end - strip, to);
        } else {
          SamplePixels(strip, y, x - strip, end - strip);
          Store(x - strip, end - strip, to);
        }
      }
    }
  }

 private:
  struct Work {
    int32_t column[kRun], row[kRun];  // where pixels are read, in the source
    float dx[kRun], dy[kRun];
    Sampler::Taps taps;
    Sampler::Samples samples[2];
    float column_weights[4][kRun], row_weights[4][kRun];
    float sums[4][3 * kRun];
    uint32_t colors[kRun];
  };

  // Pixels of a row.
  struct Span {
    int32_t first, end;
  };

  // The axes along row y.
  void FindRow(int32_t y) {
    // Halves are whole numbers.
    const float v = static_cast<float>(static_cast<int32_t>(turn_.height) / 2 - y);
    const Sampler::Range columns = sampler_.Inner(sampler_.width());
    const Sampler::Range lines = sampler_.Inner(sampler_.height());
    axes_[0] = {turn_.c, v * turn_.s, static_cast<float>(sampler_.width() / 2), columns.low,
                columns.high};
    axes_[1] = {turn_.s, -(v * turn_.c), static_cast<float>(sampler_.height() / 2), lines.low,
                lines.high};
  }

  int32_t FromMiddle(int32_t x) const { return x - static_cast<int32_t>(turn_.width) / 2; }

  float At(const simd::TurnedAxis& axis, int32_t x) const {
    return static_cast<float>(FromMiddle(x)) * axis.step + axis.origin + axis.center;
  }

  // The first pixel of a row of positions that ascend (sign 1) or descend (sign -1) that lies at or
  // beyond the limit.
  int32_t FirstAt(const simd::TurnedAxis& axis, double sign, double limit) const {
    const auto reached = [&](int32_t x) { return sign * At(axis, x) >= sign * limit; };
    const double width = static_cast<double>(turn_.width);
    const double guess = (limit - axis.center - axis.origin) / axis.step - FromMiddle(0);
    int32_t x = static_cast<int32_t>(guess > 0 ? std::min(guess, width) : 0);
    while (x > 0 && reached(x - 1)) --x;
    while (x < turn_.width && !reached(x)) ++x;
    return x;
  }

  // The pixels whose positions are at least `low` and at least `margin` below the source's size.
  Span Between(float low, int32_t margin) const {
    Span span = {0, static_cast<int32_t>(turn_.width)};
    for (const auto& [axis, size] : {std::pair{axes_[0], sampler_.width() - margin},
                                     std::pair{axes_[1], sampler_.height() - margin}}) {
      const double below_size = std::nextafter(static_cast<double>(size), 0);
      const double sign = axis.step < 0 ? -1 : 1;
      span.first = std::max(span.first, FirstAt(axis, sign, sign > 0 ? low : below_size));
      span.end = std::min(span.end, sign > 0 ? FirstAt(axis, sign, size)
                                             : FirstAt(axis, sign, std::nextafter(low, -2.0f)));
    }
    return span;
  }

  // Pixels [first, end) of the strip that starts at x.
  void SamplePixels(int32_t x, int32_t y, int first, int end) {
    for (int i = first; i < end; ++i) {
      Position at[2];
      for (int k = 0; k < 2; ++k) {
        const float position = At(axes_[k], x + i);
        at[k].whole = static_cast<int32_t>(position);
        at[k].fraction = position - static_cast<float>(at[k].whole);
      }
      (*work_).colors[i] = sampler_.SamplePixel(at[0], at[1], x + i, y);
    }
  }

  void Store(int first, int end, uint8_t* to) {
    sampler_.Store((*work_).colors, first, end, (end + 7) & ~7, to);
  }

  void SampleRun(int32_t x, int32_t y, int first, int end, uint8_t* to) {
    Work& w = *work_;
    const bool point = sampler_.mode() == kPoint;
    const size_t n = static_cast<size_t>(end - first);
    const int32_t from = FromMiddle(x + first);
    functions_.turned_positions(axes_[0], from, n, w.column + first,
                                point ? nullptr : w.dx + first);
    functions_.turned_positions(axes_[1], from, n, w.row + first, point ? nullptr : w.dy + first);
    sampler_.FindNeighbours(w.column, w.row, x, first, end, &w.taps);
    sampler_.ReadAhead(w.taps, ahead_, first, end);
    if (sampler_.Picks()) {
      if (bit_count_ == 1) {
        PickBits(first, end, to);
      } else {
        sampler_.Pick(w.taps, 0, first, end, to);
      }
      return;
    }
    if (sampler_.mode() == kBilinear && sampler_.BlendsBytes()) {
      sampler_.BlendBytes(w.taps, 0, w.dx, w.dy, false, first, end, to);
      return;
    }
    if (sampler_.mode() == kBicubic) {
      BicubicRun(x, y, first, end, to);
      return;
    }
    sampler_.Fetch(w.taps, 0, first, end, &w.samples[0]);
    if (point) {
      std::copy(w.samples[0].tap[0] + first, w.samples[0].tap[0] + end, w.colors + first);
    } else {
      sampler_.Fetch(w.taps, 1, first, end, &w.samples[1]);
      sampler_.Blend(w.samples[0], w.samples[1], w.dx, w.dy, false, first, end, w.colors);
    }
    Store(first, end, to);
  }

  void BicubicRun(int32_t x, int32_t y, int first, int end, uint8_t* to) {
    Work& w = *work_;
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
      sums[j] = w.sums[j];
      if (sampler_.BlendsBytes()) {
        sampler_.SumBytesAcross(w.taps, row_offsets.at[j], x, w.column_weights, false, first, end,
                                w.sums[j]);
      } else {
        sampler_.Fetch(w.taps, row_offsets.at[j], first, end, &w.samples[0]);
        sampler_.SumAcross(w.samples[0], x, w.column_weights, first, end, w.sums[j]);
      }
    }
    const int low = std::min(end, uncorrected_.first - x);
    const int high = std::max(first, uncorrected_.end - x);
    if (sampler_.BlendsBytes()) {
      sampler_.SumBytesDown(sums, all_row_weights, false, first, end, to);
      SamplePixels(x, y, first, low);
      Store(first, low, to);
      SamplePixels(x, y, high, end);
      Store(high, end, to);
    } else {
      sampler_.SumDown(sums, all_row_weights, false, first, end, w.colors);
      SamplePixels(x, y, first, low);
      SamplePixels(x, y, high, end);
      Store(first, end, to);
    }
  }

  // A byte of pixels may begin or end outside the source.
  void PickBits(int first, int end, uint8_t* to) {
    Sampler::Taps& taps = (*work_).taps;
    const int first_of_byte = first & ~7, end_of_byte = (end + 7) & ~7;
    for (int i = first_of_byte; i < first; ++i) taps.offset[0][i] = taps.offset[0][first];
    for (int i = end; i < end_of_byte; ++i) taps.offset[0][i] = taps.offset[0][first];
    std::fill(taps.shift[0] + first_of_byte, taps.shift[0] + first, uint8_t{0});
    std::fill(taps.shift[0] + end, taps.shift[0] + end_of_byte, uint8_t{0});
    sampler_.Pick(taps, 0, first_of_byte, end_of_byte, to);
    to[first / 8] = static_cast<uint8_t>(to[first / 8] | ~(0xFFu >> (first - first_of_byte)));
    uint8_t& last = to[end_of_byte / 8 - 1];
    last = static_cast<uint8_t>(last | ((1u << (end_of_byte - end)) - 1));
  }

  Sampler& sampler_;
  const Turn turn_;
  const uint16_t bit_count_;
  const simd::RowFunctions& functions_;
  AlignedScratch<Work> work_;
  const ptrdiff_t ahead_;  // from a pixel in the source to where a later row reads
  simd::TurnedAxis axes_[2];
  Span uncorrected_ = {0, 0};  // bicubic: the pixels of a row that need no correction
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
  return block.Replace(image);
}

}  // namespace ombrilo

uint32_t omb_rotate(PackedDib** image, float degrees, uint32_t mode) {
  return ombrilo::Rotate(image, degrees, mode, ombrilo::Resampling::kRuns);
}
