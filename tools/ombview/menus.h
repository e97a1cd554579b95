// The menu bar: file, edit and view by a table of commands, then a menu for each family of steps.
#pragma once

#include <windows.h>

#include <string>

#include "capture.h"
#include "document.h"

namespace ombview {

HMENU MakeMenuBar();
HACCEL MakeAccelerators();

// What decides how the menus look when they open.
struct MenuState {
  const Document& document;
  bool fit, histogram;
};

// Grays what cannot be done now, checks what is on, says what undo would undo.
void UpdateMenu(HMENU menu, const MenuState& state);

// Whether it is the list of windows that can be captured, and the list itself.
bool IsCaptureMenu(HMENU menu);
void FillCaptureMenu(HMENU menu, const std::vector<OpenWindow>& windows);

}  // namespace ombview
