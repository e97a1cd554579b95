#include "tone/histogram.h"

#include "core/pixels.h"
#include "rows/row_functions.h"

namespace ombrilo {

void Histogram::Add(const uint8_t* bytes, size_t count, size_t step) {
  simd::Active().count_bytes(bytes, step, count, sets_);
}

void Histogram::AddIndices(const DibView& dib, int32_t rows) {
  for (int32_t y = 0; y < rows; ++y) {
    ForEachIndexRun(dib.row(y), dib.bit_count(), static_cast<size_t>(dib.width()),
                    [&](size_t, const uint8_t* indices, size_t count) { Add(indices, count); });
  }
}

int32_t PixelCount(const DibHeader& header) {
  return static_cast<int32_t>(static_cast<uint32_t>(header.width) *
                              static_cast<uint32_t>(header.height));
}

}  // namespace ombrilo
