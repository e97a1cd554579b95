#include "tone/levels.h"

#include <cmath>

namespace ombrilo {

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
  const double low_count = std::trunc(samples * low);
  const double high_count = std::trunc(samples * high);
  Levels levels = {-1, 255};
  bool found_high = false;
  double cumulative[256];
  double sum = 0;
  for (size_t i = 0; i < 256; ++i) cumulative[i] = sum += histogram[i];
  for (int i = 0; i < 256 && levels.low < 0; ++i) {
    if (cumulative[i] > low_count) levels.low = i;
  }
  if (levels.low < 0) levels.low = 0;
  for (int i = 255; i >= 0 && !found_high; --i) {
    found_high =
        test == UpperTest::kAtMost ? cumulative[i] <= high_count : cumulative[i] < high_count;
    if (found_high) levels.high = i;
  }
  return levels;
}

}  // namespace ombrilo
