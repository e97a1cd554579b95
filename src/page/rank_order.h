#pragma once

#include <cstdint>

#include "ombrilo/ombrilo.h"

namespace ombrilo {

// Rank-order filter: in each of `passes` passes, every byte becomes the value at `percentile` (0 to
// 100) of the sorted values in the square of 2 radius + 1 pixels around it; `radius` is 1 to 3.
// Channels of 24-bit images are ranked separately; at other depths, bytes are. A band of `radius`
// pixels keeps its values. 1; 0 for null, for other percentiles and when memory runs out.
int32_t RankOrder(PackedDib* image, int32_t radius, int32_t passes, int32_t percentile);

}  // namespace ombrilo
