// omb list: the steps there are.
#include <cstdio>

#include "commands.h"
#include "steps/kernels.h"
#include "steps/steps.h"
#include "steps_json.h"
#include "terminal.h"

namespace omb {

namespace {

void ListAll() {
  constexpr int kWidth = 36;
  std::string family;
  for (const Step* step : AllSteps()) {
    if (step->Family() != family) {
      std::printf("%s%s\n", family.empty() ? "" : "\n", step->Family().c_str());
      family = step->Family();
    }
    const std::string usage = step->Usage();
    std::printf("  %-*s", kWidth, usage.c_str());
    if (usage.size() > kWidth) std::printf("\n  %-*s", kWidth, "");
    std::printf("  %s\n", step->summary);
  }
  std::printf("\n'omb list STEP' tells more about a step, 'omb list kernels' draws the kernels.\n");
}

void ListOne(const Step& step) {
  std::printf("%s (%s): %s\n\n%s", step.name, step.Title().c_str(), step.summary,
              step.Help().c_str());
  std::printf("depths: %s bits per pixel\nfamily: %s\n", step.DepthList().c_str(),
              step.Family().c_str());
}

void ListKernels() {
  const int columns = TerminalWidth(stdout);
  if (columns > 0) PrepareTerminal();
  std::printf(
      "Kernels as they lie on the picture, with their numbers and names; [ ] is the pixel that\n"
      "receives the result. Squares are shapes without weights, for morph.\n\n%s",
      DrawKernels(columns > 0 ? columns : 100).c_str());
}

}  // namespace

int List(const std::string& name, bool json) {
  if (json) {
    std::printf("%s\n",
                StepsJson(name.empty() ? AllSteps() : std::vector{&StepNamed(name)}).c_str());
    return 0;
  }
  if (name.empty()) {
    ListAll();
    return 0;
  }
  if (name == "kernels") {
    ListKernels();
    return 0;
  }
  ListOne(StepNamed(name));
  return 0;
}

}  // namespace omb
