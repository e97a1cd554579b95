// The calls to gdi32 and user32 that the library makes, under their own names. Each module is
// loaded by the first call that needs it, so that the library itself also loads where there is no
// desktop. There, and wherever else a call cannot be made, it counts as failed: the result is 0.
//
// Handles are Windows' own types, declared here so that callers need no Windows headers: the tests
// supply these functions themselves, on every platform.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ombrilo/ombrilo.h"

struct HBITMAP__;
struct HDC__;
struct HPALETTE__;
struct HWND__;

namespace ombrilo::gdi {

using Bitmap = HBITMAP__*;
using Dc = HDC__*;
using Object = void*;  // a bitmap or a palette
using Palette = HPALETTE__*;
using Window = HWND__*;

// BITMAP
struct BitmapShape {
  int32_t type, width, height, width_bytes;
  uint16_t planes, bits_per_pixel;
  void* bits;
};

// POINT
struct Point {
  int32_t x, y;
};

// RECT
using Rect = OmbRect;

inline constexpr int kDefaultPalette = 15;        // DEFAULT_PALETTE
inline constexpr int kHorzRes = 8;                // HORZRES
inline constexpr int kVertRes = 10;               // VERTRES
inline constexpr int kBitsPixel = 12;             // BITSPIXEL
inline constexpr int kPlanes = 14;                // PLANES
inline constexpr uint32_t kDibRgbColors = 0;      // DIB_RGB_COLORS
inline constexpr uint32_t kSrcCopy = 0x00CC0020;  // SRCCOPY

// gdi32. A BITMAPINFO is passed as a header with its color table, a LOGPALETTE and palette entries
// as bytes.
int BitBlt(Dc to, int x, int y, int width, int height, Dc from, int from_x, int from_y,
           uint32_t operation);
Bitmap CreateCompatibleBitmap(Dc dc, int width, int height);
Dc CreateCompatibleDC(Dc dc);
Dc CreateDCA(const char* driver);
Bitmap CreateDIBSection(Dc dc, const void* bitmap_info, uint32_t usage, void** bits);
Palette CreatePalette(const void* log_palette);
int DeleteDC(Dc dc);
int DeleteObject(Object object);
int GdiFlush();
int GetDeviceCaps(Dc dc, int index);
int GetDIBits(Dc dc, Bitmap bitmap, uint32_t start, uint32_t rows, void* bits, void* bitmap_info,
              uint32_t usage);
int GetObjectA(Object object, int size, void* to);
Object GetStockObject(int index);
uint32_t GetSystemPaletteEntries(Dc dc, uint32_t start, uint32_t count, void* entries);
uint32_t RealizePalette(Dc dc);
Object SelectObject(Dc dc, Object object);
Palette SelectPalette(Dc dc, Palette palette, int background);
uint32_t SetDIBColorTable(Dc dc, uint32_t start, uint32_t count, const void* quads);

// user32
int ClientToScreen(Window window, Point* point);
int GetClientRect(Window window, Rect* rect);
Dc GetDC(Window window);
int GetWindowRect(Window window, Rect* rect);
int IsRectEmpty(const Rect* rect);
int ReleaseDC(Window window, Dc dc);

}  // namespace ombrilo::gdi
