// omb list: the steps there are.
#include <algorithm>
#include <cstdio>

#include "commands.h"
#include "errors.h"
#include "steps/steps.h"

namespace omb {

namespace {

void ListAll() {
  const std::vector<const Step*> steps = AllSteps();
  size_t width = 0;
  for (const Step* step : steps) width = std::max(width, step->Usage().size());
  width = std::min<size_t>(width, 36);
  std::string family;
  for (const Step* step : steps) {
    if (step->family != family) {
      std::printf("%s%s\n", family.empty() ? "" : "\n", step->family);
      family = step->family;
    }
    std::printf("  %-*s  %s\n", static_cast<int>(width), step->Usage().c_str(), step->summary);
  }
  std::printf("\n'omb list STEP' tells more about a step.\n");
}

void ListOne(const Step& step) {
  std::printf("%s: %s\n\n%s", step.name, step.summary, step.Help().c_str());
  std::printf("depths: %s bits per pixel\nfamily: %s\n", step.DepthList().c_str(), step.family);
}

}  // namespace

int List(const std::string& name) {
  if (name.empty()) {
    ListAll();
    return 0;
  }
  const Step* step = FindStep(name);
  if (step == nullptr) {
    throw UsageError("there is no step '" + name + "'", "'omb list' shows the steps there are\n");
  }
  ListOne(*step);
  return 0;
}

}  // namespace omb
