// Color ramps that replace gray levels: what "pseudocolor=fire" looks like.
#pragma once

#include <cstdint>
#include <vector>

#include "steps/parameter.h"

namespace omb {

// The ramps' names, each with the number that RampColor() takes.
std::vector<Name> RampNames();

// The color of a gray level as 0xRRGGBB.
uint32_t RampColor(int ramp, int level);

}  // namespace omb
