// Converts between packed DIBs and the objects of the Windows graphics interface: device bitmaps,
// DIB sections and what is on the screen.
//
// The order of the calls is part of the contract, and so is what is released when one fails: three
// failures keep a resource, each of them marked.
#pragma once

#include "core/gdi.h"
#include "core/packed_dib.h"

namespace ombrilo {

// A device bitmap as a new image of 1, 4, 8 or 24 bits, or null. `palette` gives meaning to the
// pixels of palette devices; null is the default palette.
PackedDib* BitmapToDib(gdi::Bitmap bitmap, gdi::Palette palette);

// A new DIB section with the pixels and the whole color table of an image that has an information
// header, or null.
gdi::Bitmap DibToSection(const PackedDib* image);

// The part of the screen that a window (1) or its client area (2) covers, as a new image, or null.
PackedDib* CopyWindowToDib(gdi::Window window, uint16_t selector);

// The part of the screen in a rectangle of screen coordinates, or null.
gdi::Bitmap CopyScreenRect(const gdi::Rect& rect);

// A palette of the screen's system colors, or null.
gdi::Palette CopySystemPalette();

}  // namespace ombrilo
