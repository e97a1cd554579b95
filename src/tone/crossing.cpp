#include "tone/crossing.h"

#include <algorithm>

#include "core/pixels.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr int kLeastSize = 256;      // of an image's sides, for a sample to be worth its time
constexpr int32_t kSampleStep = 17;  // a prime: what repeats from row to row does not mislead it
constexpr int kMostFirst = 256 - simd::kBounds;

}  // namespace

Crossing FindCrossing(const Histogram& histogram, double number) {
  Crossing crossing = {0, 0, 0};
  for (; crossing.level < 256; ++crossing.level) {
    crossing.up_to += histogram[static_cast<size_t>(crossing.level)];
    if (static_cast<double>(crossing.up_to) > number) break;
    crossing.below = crossing.up_to;
  }
  return crossing;
}

// Calls use(levels, count) for the levels of every `step`-th row, those of three channels
// interleaved.
template <size_t kChannels>
template <class Use>
void PixelCrossings<kChannels>::ForEachRun(int32_t step, Use&& use) const {
  const size_t width = static_cast<size_t>(dib_.width());
  // Of several short rows, or of a part of a long one.
  alignas(simd::kCacheLine) uint8_t gray[3 * kRun];
  size_t held = 0;
  for (int32_t y = 0; y < dib_.pixel_rows(); y += step) {
    if (kChannels == 3) {
      use(dib_.row(y), 3 * width);
      continue;
    }
    size_t count;
    for (size_t x = 0; x < width; x += count) {
      count = std::min(sizeof gray - held, width - x);
      simd::Active().gray_double(dib_.row(y) + 3 * x, count, gray + held);
      held += count;
      if (held == sizeof gray) {
        use(gray, held);
        held = 0;
      }
    }
  }
  if (held != 0) use(gray, held);
}

template <size_t kChannels>
void PixelCrossings<kChannels>::Count(int32_t step) {
  if (step_ != 0) std::fill_n(histograms_, kChannels, Histogram());
  step_ = step;
  ForEachRun(step, [&](const uint8_t* levels, size_t count) {
    for (size_t c = 0; c < kChannels; ++c) {
      histograms_[c].Add(levels + c, count / kChannels, kChannels);
    }
  });
}

// Counts what is less than a few levels around the guess and, if these are too high or too low,
// those next to them.
template <size_t kChannels>
bool PixelCrossings<kChannels>::FindNearGuess(double number, Crossing (&found)[kChannels]) const {
  const int32_t rows = dib_.pixel_rows(), sampled = (rows + step_ - 1) / step_;
  int first[kChannels];
  for (size_t c = 0; c < kChannels; ++c) {
    const int guess = FindCrossing(histograms_[c], number / rows * sampled).level;
    // The least level of all rows is often less than that of some, and never more.
    first[c] = std::clamp(guess - (number == 0 ? 2 : 1), 0, kMostFirst);
  }
  bool all = false;
  for (int turn = 0; turn < 2 && !all; ++turn) {
    simd::LevelsBelow counts = {};
    for (size_t i = 0; i < simd::kBoundLanes; ++i) {
      counts.bound[i] = static_cast<uint8_t>(first[i % kChannels]);
    }
    ForEachRun(1, [&](const uint8_t* levels, size_t count) {
      simd::Active().count_below(levels, count, counts);
    });
    all = true;
    for (size_t c = 0; c < kChannels; ++c) {
      int64_t below[simd::kBounds] = {};
      for (size_t k = 0; k < simd::kBounds; ++k) {
        for (size_t i = c; i < simd::kBoundLanes; i += kChannels) {
          below[k] += int64_t{counts.many[k][i]} + counts.few[k][i];
        }
      }
      int k = 0;
      while (k < simd::kBounds && static_cast<double>(below[k]) <= number) ++k;
      const bool last = k == simd::kBounds;
      if (k > 0 && (!last || first[c] == kMostFirst)) {
        found[c] = {first[c] + k - 1, below[k - 1], last ? pixels_ : below[k]};
      } else {
        first[c] = std::clamp(first[c] + (last ? 1 : -1) * (simd::kBounds - 1), 0, kMostFirst);
        all = false;
      }
    }
  }
  return all;
}

template <size_t kChannels>
void PixelCrossings<kChannels>::Find(double number, Crossing (&found)[kChannels]) {
  const bool exceeded = number < static_cast<double>(pixels_);  // not where it is NaN
  if (!exceeded || number < 0) {
    std::fill_n(found, kChannels, Crossing{exceeded ? 0 : 256, 0, 0});
    return;
  }
  const bool small = std::min(dib_.width(), dib_.pixel_rows()) < kLeastSize;
  if (step_ == 0) Count(small ? 1 : kSampleStep);
  if (step_ != 1) {
    if (FindNearGuess(number, found)) return;
    Count(1);
  }
  for (size_t c = 0; c < kChannels; ++c) found[c] = FindCrossing(histograms_[c], number);
}

template class PixelCrossings<1>;
template class PixelCrossings<3>;

}  // namespace ombrilo
