// Turns by right angles, which move pixels exactly.
#pragma once

#include <cstdint>

#include "core/packed_dib.h"

namespace ombrilo {

// Turns the image, whose view is `source`, clockwise by 1, 2 or 3 quarter turns. 0 for depths other
// than 1, 4, 8 and 24, for negative sizes and when memory runs out.
uint32_t TurnByQuarters(PackedDib** image, const DibView& source, int quarters);

}  // namespace ombrilo
