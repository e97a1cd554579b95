#pragma once

#include <cstdint>

#include "ombrilo/ombrilo.h"

namespace ombrilo {

// The tone routines of omb_EnhancePage(), on the whole image and by blocks of `block` pixels.
// `size` is the reach of the search for paper; `strength` and `cut` are passes and strength there.
int32_t EnhanceTone(PackedDib* image, int32_t curve, int32_t size, int32_t strength, int32_t cut);
int32_t EnhanceToneByBlocks(PackedDib* image, int32_t curve, int32_t block, int32_t strength,
                            int32_t cut);

}  // namespace ombrilo
