#include "theme.h"

#include <commctrl.h>

namespace ombview {

namespace {

constexpr Theme kLight = {.dark = false,
                          .ground = RGB(0xD0, 0xD0, 0xD3),
                          .bar = RGB(0xF5, 0xF5, 0xF6),
                          .bar_text = RGB(0x1B, 0x1B, 0x1D),
                          .faint_text = RGB(0x5C, 0x5C, 0x62),
                          .line = RGB(0xD2, 0xD2, 0xD6),
                          .hot = RGB(0xDC, 0xE6, 0xF5),
                          .plot = RGB(0xFF, 0xFF, 0xFF)};
constexpr Theme kDark = {.dark = true,
                         .ground = RGB(0x1C, 0x1C, 0x1E),
                         .bar = RGB(0x2B, 0x2B, 0x2E),
                         .bar_text = RGB(0xEC, 0xEC, 0xEE),
                         .faint_text = RGB(0xA2, 0xA2, 0xA8),
                         .line = RGB(0x45, 0x45, 0x4A),
                         .hot = RGB(0x41, 0x48, 0x55),
                         .plot = RGB(0x18, 0x18, 0x1A)};

const Theme* theme = &kLight;

bool SystemIsDark() {
  DWORD light = 1, size = sizeof light;
  RegGetValueW(HKEY_CURRENT_USER,
               L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
               L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &light, &size);
  return light == 0;
}

// By name: versions of Windows without dark windows may lack the function.
template <class Pointer>
Pointer Function(const wchar_t* library, const char* name) {
  return reinterpret_cast<Pointer>(
      reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(library), name)));
}

}  // namespace

const Theme& CurrentTheme() { return *theme; }

bool UpdateTheme() {
  const Theme* now = SystemIsDark() ? &kDark : &kLight;
  if (now == theme) return false;
  theme = now;
  return true;
}

void ApplyTheme(HWND window) {
  using SetAttribute = HRESULT(WINAPI*)(HWND, DWORD, const void*, DWORD);
  static const auto set = Function<SetAttribute>(L"dwmapi.dll", "DwmSetWindowAttribute");
  constexpr DWORD kDarkFrame = 20;  // DWMWA_USE_IMMERSIVE_DARK_MODE
  const BOOL dark = theme->dark;
  if (set != nullptr) set(window, kDarkFrame, &dark, sizeof dark);
}

void ApplyThemeToDialog(HWND dialog) {
  ApplyTheme(dialog);
  if (!theme->dark) return;
  EnumChildWindows(
      dialog,
      [](HWND control, LPARAM) -> BOOL {
        using SetTheme = HRESULT(WINAPI*)(HWND, const wchar_t*, const wchar_t*);
        static const auto set = Function<SetTheme>(L"uxtheme.dll", "SetWindowTheme");
        wchar_t name[40] = {};
        GetClassNameW(control, name, ARRAYSIZE(name));
        const bool list = lstrcmpiW(name, WC_COMBOBOXW) == 0;
        if (set != nullptr) set(control, list ? L"DarkMode_CFD" : L"DarkMode_Explorer", nullptr);
        if (lstrcmpiW(name, WC_LISTVIEWW) == 0) {
          ListView_SetBkColor(control, theme->plot);
          ListView_SetTextBkColor(control, theme->plot);
          ListView_SetTextColor(control, theme->bar_text);
        }
        return TRUE;
      },
      0);
}

HBRUSH ColorControl(UINT message, HDC dc) {
  if (!theme->dark) return nullptr;
  static const HBRUSH bar = CreateSolidBrush(kDark.bar), plot = CreateSolidBrush(kDark.plot);
  const bool field = message == WM_CTLCOLOREDIT || message == WM_CTLCOLORLISTBOX;
  SetTextColor(dc, theme->bar_text);
  SetBkColor(dc, field ? theme->plot : theme->bar);
  return field ? plot : bar;
}

}  // namespace ombview
