// The threshold between dark and light that splits an image best.
#pragma once

#include "image.h"

namespace omb {

// The highest gray level of the dark class, by N. Otsu, "A threshold selection method from
// gray-level histograms", IEEE Transactions on Systems, Man, and Cybernetics 9, 1979: the variance
// between the classes is largest. 127 for an image of one level. Throws std::runtime_error when
// memory runs out.
int OtsuThreshold(const PackedDib* dib);

}  // namespace omb
