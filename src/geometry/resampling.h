#pragma once

#include <cstdint>

#include "ombrilo/ombrilo.h"

namespace ombrilo {

// How resampled pixels are computed: results are the same, and a test says so.
enum class Resampling {
  kRuns,       // runs of pixels where nothing needs correction, single pixels at the borders
  kPixelwise,  // every pixel on its own
};

// omb_scale.
uint32_t Scale(PackedDib** image, uint32_t width, uint32_t height, uint32_t mode,
               Resampling resampling);

// omb_rotate.
uint32_t Rotate(PackedDib** image, float degrees, uint32_t mode, Resampling resampling);

}  // namespace ombrilo
