// Small versions of images, for the gallery.
#pragma once

#include "image.h"

namespace omb {

// The image reduced to fit a box, each pixel the average of the area that it covers; never
// enlarged. Gray images give 8 bits with a gray ramp, others 24 bits. Takes any depth. Throws
// std::bad_alloc.
Image Thumbnail(const PackedDib* dib, int box_width, int box_height);

}  // namespace omb
