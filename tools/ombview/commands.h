// What menus, keys and the toolbar can ask for, by the numbers in WM_COMMAND.
#pragma once

#include <windows.h>

#include <span>
#include <string>

#include "steps/steps.h"

namespace ombview {

enum Command : WORD {
  kOpen = 100,
  kSave,
  kSaveAs,
  kPrint,
  kExit,
  kUndo,
  kRedo,
  kCopy,
  kPaste,
  kSelectAll,
  kSelecting,
  kCropToSelection,
  kFit,
  kActualSize,
  kZoomIn,
  kZoomOut,
  kCompare,
  kHistogram,
  kToolbar,
  kStop,
  kAbout,
  kFirstRecent = 200,   // then one for each recent file
  kFirstStep = 1000,    // then one for each step, in the order of AllSteps()
  kFirstWindow = 2000,  // then one for each window that can be captured
};

// The step that a number stands for; null when it stands for something else.
const omb::Step* StepOf(WORD command);
WORD CommandOf(const omb::Step& step);

// Asks the main window whether it still computes: 1, or 0 when what it shows is final.
inline constexpr UINT kQueryBusy = WM_APP + 1;

}  // namespace ombview
