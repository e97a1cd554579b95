// Rows of results that no cache holds, written with streaming stores. An ordinary store that misses
// the caches first reads the line it is about to overwrite. Where rows follow each other backwards
// in memory, no prefetcher expects the lines of the row before, either: together that takes twice
// the time. Of rows that are made forwards, those of four-byte pixels gain, and those of omb_crop,
// which only copies; others gain little or lose.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/read_ahead.h"
#include "rows/row_functions.h"

namespace ombrilo {

class RowStream {
 public:
  static constexpr size_t kShortest = 1024;  // bytes of a row; shorter ones are slower

  // For a result of `result` bytes made of `source` bytes.
  RowStream(bool gains, uint64_t source, uint64_t result)
      : streams_(gains && source + result >= kCached) {}
  RowStream(const RowStream&) = delete;
  RowStream& operator=(const RowStream&) = delete;
  ~RowStream() {
    if (streams_) functions_.finish_stream();
  }

  // Whether any row is written in another way than usual.
  bool streams() const { return streams_; }

  // Writes `pixels` pixels of `bits` bits to `row`. make(first, count, to) makes `count` of them,
  // from pixel `first` on, which is a multiple of 8.
  template <class Make>
  void Write(uint8_t* row, size_t pixels, size_t bits, Make&& make) const {
    const size_t size = bits / 8;
    if (!streams_ || pixels * size < kShortest) return make(size_t{0}, pixels, row);
    // Short pieces: their stores drain while the next piece is made. Lines begin where they do in
    // the row, and what a piece has of a last line is the beginning of the next one.
    // Aligned so that none crosses a page: stores that do took three times as long in all.
    alignas(16 * kLine) uint8_t piece[kPiece + kLine];  // a whole line is moved, whatever it holds
    size_t start = reinterpret_cast<uintptr_t>(row) % kLine, end = start;
    for (size_t first = 0;;) {
      const size_t count = std::min((kPiece - end) / size / 8 * 8, pixels - first);
      make(first, count, piece + end);
      first += count;
      end += count * size;
      if (first == pixels) return Copy(piece + start, end - start, row);
      const size_t whole = end / kLine * kLine;
      Copy(piece + start, whole - start, row);
      row += whole - start;
      std::memcpy(piece, piece + whole, kLine);
      start = 0;
      end -= whole;
    }
  }

 private:
  static constexpr size_t kLine = simd::kCacheLine;
  static constexpr size_t kPiece = 13 * kLine;

  void Copy(const uint8_t* piece, size_t count, uint8_t* row) const {
    functions_.stream(piece, count, row, piece);
  }

  const simd::RowFunctions& functions_ = simd::Active();
  const bool streams_;
};

}  // namespace ombrilo
