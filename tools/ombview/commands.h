// What the menus can ask for, by the numbers in WM_COMMAND.
#pragma once

#include <windows.h>

#include <string>

#include "steps/steps.h"

namespace ombview {

enum Command : WORD {
  kOpen = 100,
  kSaveAs,
  kExit,
  kUndo,
  kRedo,
  kCopy,
  kPaste,
  kFit,
  kHistogram,
  kFirstStep = 1000,    // then one for each step, in the order of AllSteps()
  kFirstWindow = 2000,  // then one for each window that can be captured
};

// The step that a number stands for; null when it stands for something else.
const omb::Step* StepOf(WORD command);
WORD CommandOf(const omb::Step& step);

}  // namespace ombview
