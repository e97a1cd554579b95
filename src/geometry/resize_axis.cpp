#include "geometry/resize_axis.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ombrilo {

namespace {

constexpr double kPi = std::numbers::pi;

double Radius(OmbResizeFilter filter) {
  constexpr double kRadius[] = {0, 0.5, 1, 2, 3};
  return kRadius[filter];
}

// 1/1!, -1/3!, 1/5! ... up to 21!, whose term is the last that matters.
struct SineSeries {
  static constexpr int kTerms = 11;
  double term[kTerms];

  constexpr SineSeries() : term() {
    double factorial = 1;
    for (int k = 0; k < kTerms; ++k) {
      term[k] = (k % 2 == 0 ? 1 : -1) / factorial;
      factorial *= (2 * k + 2) * (2 * k + 3);  // exact
    }
  }
};

// sin(pi x). Sine() is exact, but would take longer than the image.
double SinPi(double x) {
  static constexpr SineSeries kSeries;
  const int turns = static_cast<int>(x + (x < 0 ? -0.5 : 0.5));
  const double t = (x - turns) * kPi;
  const double square = t * t;
  double sum = 0;
  for (int k = SineSeries::kTerms - 1; k >= 0; --k) sum = kSeries.term[k] + square * sum;
  return turns % 2 == 0 ? t * sum : -(t * sum);
}

double Sinc(double x) { return x == 0 ? 1 : SinPi(x) / (x * kPi); }

double Value(OmbResizeFilter filter, double x) {
  const double a = std::fabs(x);
  switch (filter) {
    case OMB_RESIZE_BOX:
      return x > -0.5 && x <= 0.5 ? 1 : 0;
    case OMB_RESIZE_TRIANGLE:
      return a < 1 ? 1 - a : 0;
    case OMB_RESIZE_CUBIC:
      if (a < 1) return (1.5 * a - 2.5) * a * a + 1;
      return a < 2 ? -0.5 * (((a - 5) * a + 8) * a - 4) : 0;
    case OMB_RESIZE_LANCZOS:
      return x >= -3 && x < 3 ? Sinc(x) * Sinc(x / 3) : 0;
  }
  return 0;
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
      values_(NewScratchBuffer<double>(most_taps_)) {}

ResizeAxis::Taps ResizeAxis::Find(int32_t i, simd::TapPair* pairs) {
  const double center = (i + 0.5) * step_;
  const auto first = std::max(int64_t{0}, static_cast<int64_t>(center - reach_ + 0.5));
  const auto end = std::min(int64_t{from_}, static_cast<int64_t>(center + reach_ + 0.5));
  const double shrink = 1 / stretch_;
  double sum = 0;
  for (int64_t k = first; k < end; ++k) {
    const double x = (static_cast<double>(k) - center + 0.5) * shrink;
    sum += values_[static_cast<size_t>(k - first)] = Value(filter_, x);
  }
  const auto count = static_cast<size_t>(end - first);
  for (size_t k = 0; k < count; k += 2) {
    const int32_t odd = k + 1 < count ? FixedPoint(values_[k + 1] / sum) : 0;
    pairs[k / 2] = PairOf(FixedPoint(values_[k] / sum), odd);
  }
  return {static_cast<int32_t>(first), static_cast<int32_t>(count)};
}

}  // namespace ombrilo
