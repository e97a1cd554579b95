// Images as a view shows them.
#pragma once

#include <functional>
#include <string>

#include "image.h"
#include "viewport.h"

namespace ombview {

// The visible part of the image at the size at which it is shown: reduced by averaging, or enlarged
// pixel by pixel. 8 bits with a gray ramp or 24 bits. Throws std::bad_alloc.
omb::Image Render(const PackedDib* image, const Viewport& viewport);

// Receives a strip of a reduced image, as wide as that is, and the row in it where it begins.
using TakeStrip = std::function<void(const PackedDib* strip, int top)>;

// Reduces a part of an image to a size that is not larger, by averaging. Strips come from the top
// down and are small, however large the image is. Throws std::bad_alloc.
void Reduce(const PackedDib* image, const Rect& pixels, Point size, const TakeStrip& take);

// A piece of an image of 1, 4, 8 or 24 bits; other depths give 24. Null when memory ran out.
omb::Image PieceOf(const PackedDib* image, const Rect& pixels);

// What a pixel holds: "#c08040", with its number in the color table where there is one.
std::string ValueAt(const PackedDib* image, Point pixel);

}  // namespace ombview
