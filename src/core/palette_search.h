// The memory that searches of a palette need (PaletteLists of rows/row_data.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/buffer.h"
#include "rows/row_functions.h"

namespace ombrilo {

template <class Lists>
class PaletteSearch {
 public:
  // For about so many colors. Takes all memory at once: 82 KiB for few colors, otherwise up to 5.2
  // MiB, of which searches touch what the colors need. False when there is none.
  explicit PaletteSearch(uint64_t colors) : many_(colors >= Lists::kManyColors) {
    const bool few = colors <= Lists::kFewColors;
    const auto& size = few ? Lists::kForFew : many_ ? Lists::kForNarrow : Lists::kForWide;
    zeroed_count_ = size.wider + 4 * size_t{size.cells};
    zeroed_ = NewZeroedBuffer<uint32_t>(zeroed_count_);
    pool_ = NewScratchBuffer<uint32_t>(size.pool);
    if (!*this) return;
    lists_.room = size.pool;
    lists_.pool = pool_.get();
    lists_.wider = zeroed_.get();
    if (!few) lists_.cells = reinterpret_cast<uint32_t(*)[4]>(zeroed_.get() + size.wider);
  }
  explicit operator bool() const { return zeroed_ && pool_; }

  // Begins with the first `count` entries of the pool, which are the palette.
  void Begin(size_t count) {
    if (lists_.count != 0) std::memset(zeroed_.get(), 0, zeroed_count_ * sizeof(uint32_t));
    lists_.count = lists_.used = static_cast<uint32_t>(count);
    if constexpr (requires { lists_.narrow; }) {
      lists_.narrow = many_;
      lists_.spare = Lists::kMostSpare;
    }
  }

  // Entry i of the palette, of blue, green and red.
  void SetEntry(uint32_t i, const uint8_t* bgr) {
    lists_.pool[i] = static_cast<uint32_t>(bgr[0] | bgr[1] << 8 | bgr[2] << 16) | i << 24;
  }

  Lists& lists() { return lists_; }

 private:
  Lists lists_ = {};
  bool many_;
  size_t zeroed_count_;
  Buffer<uint32_t> zeroed_, pool_;
};

}  // namespace ombrilo
