// Levels: where a histogram is cut at its dark and its bright end, and the stretch of what remains.
#pragma once

#include <cstdint>

#include "core/packed_dib.h"
#include "tone/histogram.h"

namespace ombrilo {

struct Levels {
  int low;
  int high;

  // Below `low` 0, above `high` 255, linear between, truncated. A value equal to both stays as it
  // is. `low` may exceed `high`.
  uint8_t Stretch(uint8_t value) const;
  void FillTable(uint8_t (&table)[256]) const;
};

// Which cumulative count ends the search for the high level: one that does not exceed the high
// number of samples, or one that stays below it.
enum class UpperTest { kAtMost, kBelow };

// The low level is the first value whose cumulative count exceeds trunc(samples * low), or 0. The
// high level is the last value whose cumulative count passes the test against trunc(samples *
// high), or 255. `samples` need not be the histogram's total.
Levels FindLevels(const Histogram& histogram, int32_t samples, double low, double high,
                  UpperTest test);

// The levels of a 24-bit image's channels, by kAtMost.
void FindLevels(const DibView& dib, double low, double high, Levels (&levels)[3]);

}  // namespace ombrilo
