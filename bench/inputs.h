// The images that benchmarks work on. Each call gives a fresh copy in a malloc block.
#pragma once

#include <cstdint>
#include <memory>

#include "ombrilo/ombrilo.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/core.hpp>
#endif
#ifdef OMBRILO_HAVE_LEPTONICA
#include <leptonica/allheaders.h>
#endif

namespace ombrilo::bench {

struct FreeDib {
  void operator()(PackedDib* dib) const { omb_freedib(dib); }
};
using Image = std::unique_ptr<PackedDib, FreeDib>;

Image Copy(const PackedDib* dib);

// 4000 x 3000 pixels of 24 bits, with the smooth areas, edges and noise of a photograph.
const PackedDib* Photo24();
// An A4 page at 300 dpi, 2480 x 3508 pixels: 8-bit gray and 1 bit.
const PackedDib* Page8();
const PackedDib* Page1();
// 1600 x 1250 pixels of 8 bits with 256 varied colors.
const PackedDib* Indexed8();

double Pixels(const PackedDib* dib);

#ifdef OMBRILO_HAVE_OPENCV
// The image's rows as a matrix over the same memory, bottom row first; bytes are channels.
cv::Mat AsMat(PackedDib* dib);
#endif
#ifdef OMBRILO_HAVE_LEPTONICA
// A copy of the image, bottom row first, of depth 1, 8 (values) or 32.
std::shared_ptr<PIX> AsPix(const PackedDib* dib);
#endif

}  // namespace ombrilo::bench
