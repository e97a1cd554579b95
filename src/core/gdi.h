// The GDI calls that the library makes. gdi32.dll is loaded by the first of them, so that the
// library itself also loads where there is no desktop.
#pragma once

#include <cstdint>

namespace ombrilo::gdi {

// An HPALETTE for a LOGPALETTE structure, or 0.
uintptr_t CreatePalette(const void* log_palette);

}  // namespace ombrilo::gdi
