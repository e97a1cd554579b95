// Where an image is on a printed page. Portable.
#pragma once

#include "viewport.h"

namespace ombview {

// What a printer says of its paper, in its dots.
struct Paper {
  Point size;               // of the sheet
  Rect printable;           // what the printer reaches of it
  Point dots = {600, 600};  // an inch, across and down
};

// An image as large as margins allow, in the middle of the sheet.
Rect PlaceOn(const Paper& paper, int width, int height);

}  // namespace ombview
