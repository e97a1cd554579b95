// ombview: images in a window, with every operation of Ombrilo in its menus.
#include <windows.h>
// The others build on it.
#include <commctrl.h>

#include <cstdlib>

#include "main_window.h"
#include "menus.h"

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int show) {
  const INITCOMMONCONTROLSEX controls = {sizeof controls,
                                         ICC_STANDARD_CLASSES | ICC_BAR_CLASSES | ICC_UPDOWN_CLASS};
  InitCommonControlsEx(&controls);
  ombview::MainWindow window;
  ShowWindow(window.handle(), show);
  if (__argc > 1) window.Open(__wargv[1]);

  const HACCEL accelerators = ombview::MakeAccelerators();
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (window.TakesKey(message)) continue;
    if (TranslateAcceleratorW(window.handle(), accelerators, &message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  // Work that was given up may still run: it ends with the process.
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(message.wParam));
  return 0;
}
