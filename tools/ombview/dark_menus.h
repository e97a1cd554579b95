// Menus that the program draws itself while Windows is dark: those of the system stay light for
// programs with a menu bar.
#pragma once

#include <windows.h>

namespace ombview {

// Makes the items of a menu, and of its submenus, ones that the program draws. Does nothing while
// Windows is light.
void Darken(HMENU menu, bool is_bar = false);

// Answers of the window to WM_MEASUREITEM, WM_DRAWITEM and WM_MENUCHAR for such items.
void MeasureMenuItem(HWND window, MEASUREITEMSTRUCT& item);
void DrawMenuItem(const DRAWITEMSTRUCT& item);
LRESULT ChooseByLetter(HMENU menu, wchar_t letter);

// Paints the menu bar to the right of the last item; for after the frame was painted.
void PaintRestOfMenuBar(HWND window);

}  // namespace ombview
