// What the library's documentation lists under "Limits", checked before it is called, so that a
// person learns why an image cannot be worked on, and what helps.
#pragma once

#include "image.h"

namespace omb {

// For steps that take the bytes of 8-bit images as levels: throws StepError where these are indices
// into a table of colors.
void CheckLevels(const PackedDib* dib);

// For steps that know width and height as numbers of 16 bits: throws StepError where these are
// larger.
void CheckSides(const PackedDib* dib);

// The same for steps that know the row length so, too.
void CheckRows(const PackedDib* dib);

}  // namespace omb
