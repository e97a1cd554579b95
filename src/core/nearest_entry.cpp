#include "core/nearest_entry.h"

#include <cstring>

namespace ombrilo {

void NearestEntry::Learn(const Palette& palette) {
  if (!lists_) return;
  simd::SquaresLists& lists = lists_[0];
  if (lists.count != 0) {
    std::memset(lists.wider, 0, sizeof lists.wider);
    std::memset(lists.cells, 0, sizeof lists.cells);
  }
  lists.count = lists.used = static_cast<uint32_t>(palette.count);
  for (uint32_t i = 0; i < lists.count; ++i) {
    const uint8_t* bgr = palette.bgr[i];
    lists.pool[i] = static_cast<uint32_t>(bgr[0] | bgr[1] << 8 | bgr[2] << 16) | i << 24;
  }
}

}  // namespace ombrilo
