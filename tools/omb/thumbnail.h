// Small versions of images, for the gallery and the viewer.
#pragma once

#include "image.h"

namespace omb {

// The image reduced to fit a box, by omb_resize(); never enlarged. Images with a gray table give 8
// bits, others 24. Takes what can be written to files, at any depth; throws FileError for other
// images, and std::bad_alloc.
Image Thumbnail(const PackedDib* dib, int box_width, int box_height);

}  // namespace omb
