#include "capture.h"

namespace ombview {

namespace {

constexpr DWORD kPaintTime = 400;  // milliseconds until a window that comes to the front is drawn

}  // namespace

std::vector<OpenWindow> OpenWindows(HWND own) {
  std::vector<OpenWindow> windows;
  for (HWND window = GetTopWindow(nullptr); window != nullptr;
       window = GetWindow(window, GW_HWNDNEXT)) {
    wchar_t title[100] = {};
    if (window == own || !IsWindowVisible(window) || IsIconic(window) ||
        GetWindowTextW(window, title, ARRAYSIZE(title)) == 0) {
      continue;
    }
    windows.push_back({window, title});
  }
  return windows;
}

omb::Image Capture(HWND window) {
  SetForegroundWindow(window);
  Sleep(kPaintTime);
  return omb::Image(reinterpret_cast<PackedDib*>(omb_CopyWindowToDIB(window, 1)));
}

}  // namespace ombview
