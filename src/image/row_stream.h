// Rows written with streaming stores, for results that no cache holds. An ordinary store that misses
// the caches first reads the line it is about to overwrite. Where rows are written in the reverse
// order of memory, these reads wait as well, since no prefetcher expects them: twice the time in
// all. Rows written forwards gained nothing.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "rows/row_functions.h"

namespace ombrilo {

class RowStream {
 public:
  // For a result of `result` bytes made of `source` bytes; together, for they share the caches.
  RowStream(uint64_t source, uint64_t result) : streams_(source + result >= kLarge) {}
  RowStream(const RowStream&) = delete;
  RowStream& operator=(const RowStream&) = delete;
  ~RowStream() {
    if (streams_) functions_.finish_stream();
  }

  // False when the result is written as usual.
  explicit operator bool() const { return streams_; }

  // Writes `pixels` pixels of `bits` bits to `row`. make(first, count, to) makes `count` of them,
  // from pixel `first` on.
  template <class Make>
  void Write(uint8_t* row, size_t pixels, size_t bits, Make&& make) const {
    if (!streams_ || bits < 8) return make(size_t{0}, pixels, row);
    // Pieces go out while the next are made; longer ones would wait for each other.
    alignas(kLine) uint8_t piece[12 * kLine];
    const size_t size = bits / 8;
    size_t first = std::min(pixels, PixelsBeforeLine(row, size));
    make(size_t{0}, first, row);
    for (size_t count; first < pixels; first += count) {
      count = std::min(sizeof piece / size, pixels - first);
      make(first, count, piece);
      functions_.stream(piece, count * size, row + first * size);
    }
  }

 private:
  static constexpr uint64_t kLarge = 16 << 20;  // about what processors have in their last cache
  static constexpr size_t kLine = 64;

  static size_t PixelsBeforeLine(const uint8_t* row, size_t size) {
    size_t count = 0;
    while (count < kLine && reinterpret_cast<uintptr_t>(row + count * size) % kLine != 0) ++count;
    return count % kLine;
  }

  const simd::RowFunctions& functions_ = simd::Active();
  const bool streams_;
};

}  // namespace ombrilo
