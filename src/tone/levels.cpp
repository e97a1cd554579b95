#include "tone/levels.h"

#include <cmath>

#include "tone/crossing.h"

namespace ombrilo {

namespace {

// Where no level exceeds the low number, the low level is 0; where all exceed the high one or none
// does, the high level is 255.
Levels LevelsBetween(const Crossing& dark, const Crossing& bright) {
  return {dark.level % 256, (bright.level + 255) % 256};
}

}  // namespace

uint8_t Levels::Stretch(uint8_t value) const {
  if (value < low) return 0;
  if (value > high) return 255;
  if (low == high) return value;
  return static_cast<uint8_t>((value - low) * 255 / (high - low));
}

void Levels::FillTable(uint8_t (&table)[256]) const {
  for (int i = 0; i < 256; ++i) table[i] = Stretch(static_cast<uint8_t>(i));
}

Levels FindLevels(const Histogram& histogram, int32_t samples, double low, double high,
                  UpperTest test) {
  const double high_count = std::trunc(samples * high) - (test == UpperTest::kBelow ? 1 : 0);
  return LevelsBetween(FindCrossing(histogram, std::trunc(samples * low)),
                       FindCrossing(histogram, high_count));
}

void FindLevels(const DibView& dib, double low, double high, Levels (&levels)[3]) {
  const int32_t samples = PixelCount(dib.header());
  PixelCrossings<3> pixels(dib);
  Crossing dark[3], bright[3];
  pixels.Find(std::trunc(samples * low), dark);
  pixels.Find(std::trunc(samples * high), bright);
  for (size_t c = 0; c < 3; ++c) levels[c] = LevelsBetween(dark[c], bright[c]);
}

}  // namespace ombrilo
