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

// What can be captured: visible windows with a title, the topmost first, but for one's own.
std::vector<OpenWindow> OpenWindows(HWND own);

// A window as the screen shows it. It comes to the front first; null when that is all it does.
omb::Image Capture(HWND window);

}  // namespace ombview
