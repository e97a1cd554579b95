// omb_gammacorrection: each channel through a power curve.
#include <cmath>

#include "core/colors_in_place.h"
#include "core/elementary.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

// Powers of a negative or not finite exponent may be infinite (255) or no number (0).
uint8_t Rounded(double value) {
  const double rounded = value + 0.5;
  if (rounded >= 255) return 255;
  return rounded >= 0 ? static_cast<uint8_t>(rounded) : uint8_t{0};
}

// 255 (value / 255)^gamma, rounded; `scale` is Power(255, gamma) / 255. A near power decides,
// except close to a half.
uint8_t Level(uint8_t value, double gamma, double scale) {
  constexpr double kOff = 1e-6;
  if (value != 0 && std::fabs(gamma) < 100) {  // no power is infinite or vanishes then
    const double near = NearPower(value, gamma) / scale;
    if (Rounded(near - kOff) == Rounded(near + kOff)) return Rounded(near);
  }
  return Rounded(Power(value, gamma) / scale);
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_gammacorrection(PackedDib* image, double gamma) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || std::fabs(gamma - 1.0) < 1e-8) return 0;
  uint8_t table[256];
  const double scale = Power(255, gamma) / 255;
  for (int i = 0; i < 256; ++i) table[i] = Level(static_cast<uint8_t>(i), gamma, scale);
  const auto apply = simd::Active().apply_table;
  // A true-color image with a color table has only its table changed.
  ChangeTableOrBytes(*dib, [&](uint8_t* bytes, size_t count) { apply(bytes, count, table); });
  return 1;
}
