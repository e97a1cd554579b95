#include "core/nearest_entry.h"

namespace ombrilo {

void NearestEntry::Learn(const Palette& palette) {
  if (!search_) return;
  const auto count = static_cast<uint32_t>(palette.count);
  search_.Begin(count);
  for (uint32_t i = 0; i < count; ++i) search_.SetEntry(i, palette.bgr[i]);
}

}  // namespace ombrilo
