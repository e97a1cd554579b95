// Counting: how often each value 0..255 occurs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/packed_dib.h"
#include "rows/row_functions.h"

namespace ombrilo {

class Histogram {
 public:
  // Counts bytes[0], bytes[step], ... bytes[(count - 1) * step].
  void Add(const uint8_t* bytes, size_t count, size_t step = 1);
  void AddTimes(uint8_t value, uint32_t times) { sets_[0][value] += times; }
  // Counts the indices in the first `rows` rows of a 1-, 4- or 8-bit image.
  void AddIndices(const DibView& dib, int32_t rows);

  // Counters are 32 bits wide and wrap.
  uint32_t operator[](size_t value) const {
    uint32_t sum = 0;
    for (const auto& set : sets_) sum += set[value];
    return sum;
  }

 private:
  uint32_t sets_[8][simd::kCounters] = {};
};

// The number of pixels that fractions of a histogram refer to: the product of the header's width
// and height in 32 bits, negative for a negative height.
int32_t PixelCount(const DibHeader& header);

}  // namespace ombrilo
