#include "core/nearest_entry.h"

namespace ombrilo {

void NearestEntry::Learn(const Palette& palette) {
  if (!search_) return;
  const auto count = static_cast<uint32_t>(palette.count);
  search_.Begin(count);
  for (uint32_t i = 0; i < count; ++i) {
    const uint8_t* bgr = palette.bgr[i];
    search_.lists().pool[i] = static_cast<uint32_t>(bgr[0] | bgr[1] << 8 | bgr[2] << 16) | i << 24;
  }
}

}  // namespace ombrilo
