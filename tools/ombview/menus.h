// The menu bar: file, edit and view by tables of commands, then a menu for each family of steps.
#pragma once

#include <windows.h>

#include <string>

#include "capture.h"
#include "document.h"
#include "recent_files.h"

namespace ombview {

HMENU MakeMenuBar();
HACCEL MakeAccelerators();

// What a command is called, with its key: "Zoom in (Ctrl++)".
std::wstring TipOf(WORD command);

// What decides how the menus look when they open.
struct MenuState {
  const Document& document;
  const RecentFiles& recent;
  bool busy, fit, selecting, selection, comparing, histogram, toolbar;
};

// Whether a command can be carried out.
bool IsPossible(WORD command, const MenuState& state);
// Whether it is one of those that stay switched on, and is.
bool IsOn(WORD command, const MenuState& state);

// Grays what cannot be done now, checks what is on, says what undo would undo.
void UpdateMenu(HMENU menu, const MenuState& state);

// Whether it is the list of windows that can be captured, and the list itself.
bool IsCaptureMenu(HMENU menu);
void FillCaptureMenu(HMENU menu, const std::vector<OpenWindow>& windows);

}  // namespace ombview
