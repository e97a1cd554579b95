#include "core/elementary.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>

namespace ombrilo {

namespace {

// The unevaluated sum of two doubles, the lower one at most half a unit in the last place of the
// upper one.
struct Pair {
  double high, low;
};

// |a| >= |b|, or a is 0.
constexpr Pair QuickSum(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}

constexpr Pair Sum(double a, double b) {
  const double sum = a + b;
  const double of_b = sum - a;
  return {sum, (a - (sum - of_b)) + (b - of_b)};
}

constexpr Pair Halves(double a) {
  const double scaled = 134217729.0 * a;  // 2^27 + 1
  const double high = scaled - (scaled - a);
  return {high, a - high};
}

constexpr Pair Product(double a, double b) {
  const double product = a * b;
  const Pair x = Halves(a), y = Halves(b);
  const double error =
      ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low;
  return {product, error};
}

constexpr Pair operator+(Pair a, Pair b) {
  const Pair high = Sum(a.high, b.high);
  const Pair low = Sum(a.low, b.low);
  const Pair sum = QuickSum(high.high, high.low + low.high);
  return QuickSum(sum.high, sum.low + low.low);
}

constexpr Pair operator-(Pair a) { return {-a.high, -a.low}; }

constexpr Pair operator*(Pair a, Pair b) {
  const Pair product = Product(a.high, b.high);
  return QuickSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr Pair operator*(Pair a, double b) {
  const Pair product = Product(a.high, b);
  return QuickSum(product.high, product.low + a.low * b);
}

constexpr Pair operator/(Pair a, double b) {
  const double first = a.high / b;
  const Pair taken = Product(first, b);
  const double rest = ((a.high - taken.high) - taken.low) + a.low;
  return QuickSum(first, rest / b);
}

// pi / 2, and ln 2, to twice the precision of a double.
constexpr Pair kHalfPi = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};
constexpr Pair kLn2 = {0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};

constexpr auto kInverseFactorials = [] {
  std::array<Pair, 30> inverse{Pair{1, 0}};
  for (size_t n = 1; n < inverse.size(); ++n) inverse[n] = inverse[n - 1] / double(n);
  return inverse;
}();

// The sum of power^(i / step) / i! from i = `first` in steps of `step` up to `last`. From `doubles`
// on, the terms are so small that a double is enough.
constexpr Pair Series(Pair power, int first, int step, int doubles, int last) {
  int i = last;
  double tail = 0;
  for (; i >= doubles; i -= step) {
    tail = kInverseFactorials[static_cast<size_t>(i)].high + power.high * tail;
  }
  Pair sum = {tail, 0};
  for (; i >= first; i -= step) sum = kInverseFactorials[static_cast<size_t>(i)] + power * sum;
  return sum;
}

// e to the power of x, |x| <= ln 2 / 2.
constexpr Pair Exponential(Pair x) { return Series(x, 0, 1, 20, 29); }

constexpr int kSteps = 32;  // from a power of 2 to the next
constexpr auto kPowersOfTwo = [] {
  std::array<Pair, kSteps> powers{};
  for (int i = 0; i < kSteps; ++i) {
    const Pair half = Exponential(kLn2 * (0.5 * i / kSteps));
    powers[static_cast<size_t>(i)] = half * half;
  }
  return powers;
}();

// The logarithm of an integer from 1 to 255, by Newton's method on its exponential. The integer is
// scaled to sqrt(1/2)..sqrt(2) by powers of 2.
constexpr Pair Logarithm(int number) {
  double m = number;
  int twos = 0;
  while (m > 1.4142135623730951) m /= 2, ++twos;
  // 2 atanh(z) to a double's precision; z = (m - 1) / (m + 1), at most 0.172 in size.
  const double z = (m - 1) / (m + 1);
  double estimate = 0;
  for (int k = 41; k >= 1; k -= 2) estimate = estimate * z * z + 1.0 / k;
  Pair log = {2 * z * estimate, 0};
  for (int pass = 0; pass < 2; ++pass) {
    log = log + (Exponential(-log) * m + Pair{-1, 0});  // m e^-log - 1
  }
  return log + kLn2 * double(twos);
}

constexpr auto kLogarithms = [] {
  std::array<Pair, 256> logarithms{};
  for (int i = 1; i < 256; ++i) logarithms[static_cast<size_t>(i)] = Logarithm(i);
  return logarithms;
}();

// The nearest number of steps in the logarithm of a power: the power is 2^size e^rest.
struct Steps {
  double size;   // in powers of 2: index / kSteps + twos
  size_t index;  // in kPowersOfTwo
  int twos;
};

Steps StepsIn(double log) {
  const int steps = static_cast<int>(log / kLn2.high * kSteps + (log < 0 ? -0.5 : 0.5));
  const int twos = (steps >= 0 ? steps : steps - (kSteps - 1)) / kSteps;
  return {double(steps) / kSteps, static_cast<size_t>(steps - twos * kSteps), twos};
}

// The nearest number of quarter turns in an angle, and the rest.
struct Reduced {
  int quarters;
  Pair rest;
};

Reduced Reduce(double angle) {
  const int quarters = static_cast<int>(angle / kHalfPi.high + (angle < 0 ? -0.5 : 0.5));
  return {quarters, Pair{angle, 0} + -(kHalfPi * double(quarters))};
}

double SineOf(const Reduced& angle) {
  const Pair power = -(angle.rest * angle.rest);
  const Pair sine = (angle.quarters & 1) != 0 ? Series(power, 0, 2, 18, 28)
                                              : angle.rest * Series(power, 1, 2, 19, 29);
  const double size = sine.high + sine.low;
  return (angle.quarters & 2) != 0 ? -size : size;
}

}  // namespace

double Power(uint8_t base, double exponent) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (base == 1 || exponent == 0) return 1;
  if (exponent != exponent) return exponent;
  if (base == 0) return exponent > 0 ? 0 : kInfinity;
  // Beyond these, even the power of the smallest base, 2, overflows or underflows.
  if (exponent > 1100) return kInfinity;
  if (exponent < -1100) return 0;
  const Pair log = kLogarithms[base] * exponent;
  const Steps steps = StepsIn(log.high);
  const Pair rest = log + -(kLn2 * steps.size);
  const Pair power = kPowersOfTwo[steps.index] * Series(rest, 0, 1, 7, 12);
  return std::ldexp(power.high + power.low, steps.twos);
}

double NearPower(uint8_t base, double exponent) {
  const double log = kLogarithms[base].high * exponent;
  const Steps steps = StepsIn(log);
  const double rest = log - kLn2.high * steps.size;
  double series = 0;
  for (size_t i = 7; i-- > 0;) series = kInverseFactorials[i].high + series * rest;
  // 2^twos by its bits: up to exponents of 100 neither too large nor too small for a normal double.
  const auto twos = static_cast<uint64_t>(1023 + steps.twos) << 52;
  return kPowersOfTwo[steps.index].high * series * std::bit_cast<double>(twos);
}

double Sine(double angle) { return SineOf(Reduce(angle)); }

double Cosine(double angle) {
  Reduced reduced = Reduce(angle);
  ++reduced.quarters;
  return SineOf(reduced);
}

}  // namespace ombrilo
