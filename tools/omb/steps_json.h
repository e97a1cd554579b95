// The table of steps for programs: `omb list --json`. docs/command-line.md describes the shape.
#pragma once

#include <string>
#include <vector>

#include "steps/steps.h"

namespace omb {

std::string StepsJson(const std::vector<const Step*>& steps);

}  // namespace omb
