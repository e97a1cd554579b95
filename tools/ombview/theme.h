// Light and dark: the colors of what the viewer paints itself, as Windows is set for programs.
#pragma once

#include <windows.h>

namespace ombview {

struct Theme {
  bool dark;
  COLORREF ground;  // around the image
  COLORREF bar, bar_text, faint_text, line, hot;
  COLORREF plot;  // behind histograms and curves
};

const Theme& CurrentTheme();
// Reads the setting anew. True when it has changed.
bool UpdateTheme();
// The frame and title of a window of the program.
void ApplyTheme(HWND window);

// Dialogs: after their controls are made, and as their answer to WM_CTLCOLOR…; null leaves it to
// the system.
void ApplyThemeToDialog(HWND dialog);
HBRUSH ColorControl(UINT message, HDC dc);

}  // namespace ombview
