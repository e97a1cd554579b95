// The palette of an indexed image: the colors that computed colors are mapped back to.
#pragma once

#include <cstdint>
#include <optional>

#include "core/packed_dib.h"

namespace ombrilo {

struct Palette {
  uint8_t bgr[256][3];  // blue, green, red; one more byte is readable, as the count follows
  int count;            // 2, 16 or 256
  bool AllGray() const;
};

// The palette of a 1-, 4- or 8-bit image; null for other depths. It always has the depth's full
// number of entries, on purpose even if the color table is shorter: the entries past it come from
// the bytes that follow, and are 0 past the end of the block.
std::optional<Palette> MakeDIBPalette(const DibView& dib);

// Whether the color table has all of these entries, so that changing pixels does not change them.
bool TableHoldsPalette(const DibView& dib);

}  // namespace ombrilo
