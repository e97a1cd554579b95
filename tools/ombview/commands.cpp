#include "commands.h"

#include <algorithm>

namespace ombview {

const omb::Step* StepOf(WORD command) {
  const auto steps = omb::AllSteps();
  const int index = command - kFirstStep;
  return index >= 0 && index < std::ssize(steps) ? steps[static_cast<size_t>(index)] : nullptr;
}

WORD CommandOf(const omb::Step& step) {
  const auto steps = omb::AllSteps();
  return static_cast<WORD>(kFirstStep + (std::ranges::find(steps, &step) - steps.begin()));
}

}  // namespace ombview
