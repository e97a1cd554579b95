// The bridge's exports, which exist on Windows alone.
#include "gdi/bridge.h"

uintptr_t omb_bmtodib(HBITMAP__* bitmap, HPALETTE__* palette) {
  return reinterpret_cast<uintptr_t>(ombrilo::BitmapToDib(bitmap, palette));
}

HBITMAP__* omb_DIBToDIBSection(const PackedDib* dib) { return ombrilo::DibToSection(dib); }

uintptr_t omb_CopyWindowToDIB(HWND__* window, uint16_t selector) {
  return reinterpret_cast<uintptr_t>(ombrilo::CopyWindowToDib(window, selector));
}
