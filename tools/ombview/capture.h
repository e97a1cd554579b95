// Images of other programs' windows.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "image.h"

namespace ombview {

struct OpenWindow {
  HWND handle;
  std::wstring title;
};

// What can be captured: visible windows with a title, the topmost first, except `own`.
std::vector<OpenWindow> OpenWindows(HWND own);

// Brings a window to the front and copies it from the screen. Null if nothing of it is there.
omb::Image Capture(HWND window);

}  // namespace ombview
