// Names for the library's numbered filters and for the kinds of relief.
#pragma once

#include <vector>

#include "steps/parameter.h"

namespace omb {

// omb_convolute's numbers. "gradient-up" and its like are bright where the picture is lighter
// above.
std::vector<Name> NumberedFilterNames();

// omb_emboss's directions: "soft-up" has its light above, so that a light spot is bright at its
// upper edge.
std::vector<Name> ReliefNames();

}  // namespace omb
