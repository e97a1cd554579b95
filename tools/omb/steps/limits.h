// What the library's documentation lists under "Limits", checked before it is called, so that a
// person learns why an image cannot be worked on, and what helps.
#pragma once

#include "image.h"

namespace omb {

// For steps that take the bytes of 8-bit images as levels: throws StepError where these are indices
// into a table of colors.
void CheckLevels(const PackedDib* dib);

// For steps that use 16 bits of width and height: throws StepError if these are larger.
void CheckSides(const PackedDib* dib);

// The same for steps that also use 16 bits of the row length.
void CheckRows(const PackedDib* dib);

}  // namespace omb
