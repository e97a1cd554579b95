// BMP's run-length compression, RLE4 and RLE8.
#pragma once

#include "core/packed_dib.h"
#include "files/codec.h"

namespace omb {

// Decodes into an image of 4 or 8 bits with pixels 0. Pixels that the file skips stay 0, those
// beyond the right edge are dropped. Throws FileError when the file ends early or has pixels above
// the top row.
void DecodeRuns(Bytes compressed, const ombrilo::Dib& dib);

}  // namespace omb
