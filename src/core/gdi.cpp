#include "core/gdi.h"

#include <windows.h>

namespace ombrilo::gdi {

static_assert(sizeof(BitmapShape) == sizeof(BITMAP) &&
              offsetof(BitmapShape, bits) == offsetof(BITMAP, bmBits));
static_assert(sizeof(Point) == sizeof(POINT) && sizeof(Rect) == sizeof(RECT));
static_assert(kDefaultPalette == DEFAULT_PALETTE && kHorzRes == HORZRES && kVertRes == VERTRES &&
              kBitsPixel == BITSPIXEL && kPlanes == PLANES && kDibRgbColors == DIB_RGB_COLORS &&
              kSrcCopy == SRCCOPY);

namespace {

constexpr wchar_t kGdi[] = L"gdi32.dll";
constexpr wchar_t kUser[] = L"user32.dll";

// Calls a function of a module; 0 where it is missing. Loading a module again only adds a reference
// to it; it stays loaded until the process ends.
template <class Result, class... Parameters, class... Arguments>
Result Call(Result(WINAPI*)(Parameters...), const wchar_t* module, const char* name,
            Arguments... arguments) {
  const HMODULE loaded = LoadLibraryExW(module, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (loaded == nullptr) return Result{};
  using Function = Result(WINAPI*)(Parameters...);
  const auto function =
      reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(loaded, name)));
  return function == nullptr ? Result{} : function(arguments...);
}

}  // namespace

// The function's own declaration only supplies its type. It is not called, so nothing is imported.
#define OMB_CALL(module, name, ...) \
  Call(static_cast<decltype(&::name)>(nullptr), module, #name __VA_OPT__(, ) __VA_ARGS__)

int BitBlt(Dc to, int x, int y, int width, int height, Dc from, int from_x, int from_y,
           uint32_t operation) {
  return OMB_CALL(kGdi, BitBlt, to, x, y, width, height, from, from_x, from_y, operation);
}

Bitmap CreateCompatibleBitmap(Dc dc, int width, int height) {
  return OMB_CALL(kGdi, CreateCompatibleBitmap, dc, width, height);
}

Dc CreateCompatibleDC(Dc dc) { return OMB_CALL(kGdi, CreateCompatibleDC, dc); }

Dc CreateDCA(const char* driver) {
  return OMB_CALL(kGdi, CreateDCA, driver, nullptr, nullptr, nullptr);
}

Bitmap CreateDIBSection(Dc dc, const void* bitmap_info, uint32_t usage, void** bits) {
  return OMB_CALL(kGdi, CreateDIBSection, dc, static_cast<const BITMAPINFO*>(bitmap_info), usage,
                  bits, nullptr, 0u);
}

Palette CreatePalette(const void* log_palette) {
  return OMB_CALL(kGdi, CreatePalette, static_cast<const LOGPALETTE*>(log_palette));
}

int DeleteDC(Dc dc) { return OMB_CALL(kGdi, DeleteDC, dc); }

int DeleteObject(Object object) { return OMB_CALL(kGdi, DeleteObject, object); }

int GdiFlush() { return OMB_CALL(kGdi, GdiFlush); }

int GetDeviceCaps(Dc dc, int index) { return OMB_CALL(kGdi, GetDeviceCaps, dc, index); }

int GetDIBits(Dc dc, Bitmap bitmap, uint32_t start, uint32_t rows, void* bits, void* bitmap_info,
              uint32_t usage) {
  return OMB_CALL(kGdi, GetDIBits, dc, bitmap, start, rows, bits,
                  static_cast<BITMAPINFO*>(bitmap_info), usage);
}

int GetObjectA(Object object, int size, void* to) {
  return OMB_CALL(kGdi, GetObjectA, object, size, to);
}

Object GetStockObject(int index) { return OMB_CALL(kGdi, GetStockObject, index); }

uint32_t GetSystemPaletteEntries(Dc dc, uint32_t start, uint32_t count, void* entries) {
  return OMB_CALL(kGdi, GetSystemPaletteEntries, dc, start, count,
                  static_cast<PALETTEENTRY*>(entries));
}

uint32_t RealizePalette(Dc dc) { return OMB_CALL(kGdi, RealizePalette, dc); }

Object SelectObject(Dc dc, Object object) { return OMB_CALL(kGdi, SelectObject, dc, object); }

Palette SelectPalette(Dc dc, Palette palette, int background) {
  return OMB_CALL(kGdi, SelectPalette, dc, palette, background);
}

uint32_t SetDIBColorTable(Dc dc, uint32_t start, uint32_t count, const void* quads) {
  return OMB_CALL(kGdi, SetDIBColorTable, dc, start, count, static_cast<const RGBQUAD*>(quads));
}

int ClientToScreen(Window window, Point* point) {
  return OMB_CALL(kUser, ClientToScreen, window, reinterpret_cast<POINT*>(point));
}

int GetClientRect(Window window, Rect* rect) {
  return OMB_CALL(kUser, GetClientRect, window, reinterpret_cast<RECT*>(rect));
}

Dc GetDC(Window window) { return OMB_CALL(kUser, GetDC, window); }

int GetWindowRect(Window window, Rect* rect) {
  return OMB_CALL(kUser, GetWindowRect, window, reinterpret_cast<RECT*>(rect));
}

int IsRectEmpty(const Rect* rect) {
  return OMB_CALL(kUser, IsRectEmpty, reinterpret_cast<const RECT*>(rect));
}

int ReleaseDC(Window window, Dc dc) { return OMB_CALL(kUser, ReleaseDC, window, dc); }

}  // namespace ombrilo::gdi
