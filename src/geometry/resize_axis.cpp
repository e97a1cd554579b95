#include "geometry/resize_axis.h"

#include <algorithm>
#include <cmath>

namespace ombrilo {

namespace {

double Radius(OmbResizeFilter filter) {
  constexpr double kRadius[] = {0, 0.5, 1, 2, 3};
  return kRadius[filter];
}

// In units of 2^-22, rounded half away from 0.
int32_t FixedPoint(double weight) {
  const double scaled = weight * (1 << simd::kTapBits);
  return static_cast<int32_t>(scaled + (scaled < 0 ? -0.5 : 0.5));
}

simd::TapPair PairOf(int32_t first, int32_t second) {
  constexpr int kLow = simd::kTapLowBits;
  constexpr uint32_t kMask = (1u << kLow) - 1;
  const auto low = [](int32_t w) { return static_cast<uint32_t>(w) & kMask; };
  const auto high = [](int32_t w) { return static_cast<uint32_t>(w >> kLow) & 0xFFFF; };
  return {low(first) | low(second) << 16, high(first) | high(second) << 16};
}

}  // namespace

ResizeAxis::ResizeAxis(int32_t from, int32_t to, OmbResizeFilter filter)
    : from_(from),
      to_(to),
      filter_(filter),
      step_(static_cast<double>(from) / to),
      stretch_(std::max(1.0, step_)),
      reach_(Radius(filter) * stretch_),
      most_taps_(static_cast<size_t>(std::min<double>(from, 2 * reach_ + 2))),
      values_(NewScratchBuffer<double>(most_taps_ + simd::kFilterPadding)) {}

ResizeAxis::Taps ResizeAxis::Find(int32_t i, simd::TapPair* pairs) {
  const double center = (i + 0.5) * step_;
  const auto first = std::max(int64_t{0}, static_cast<int64_t>(center - reach_ + 0.5));
  const auto end = std::min(int64_t{from_}, static_cast<int64_t>(center + reach_ + 0.5));
  const auto count = static_cast<size_t>(end - first);
  simd::Active().resize_filter[filter_ - 1](static_cast<double>(first), center, 1 / stretch_, count,
                                            values_.get());
  double sum = 0;
  for (size_t k = 0; k < count; ++k) sum += values_[k];
  for (size_t k = 0; k < count; k += 2) {
    const int32_t odd = k + 1 < count ? FixedPoint(values_[k + 1] / sum) : 0;
    pairs[k / 2] = PairOf(FixedPoint(values_[k] / sum), odd);
  }
  return {static_cast<int32_t>(first), static_cast<int32_t>(count)};
}

}  // namespace ombrilo
