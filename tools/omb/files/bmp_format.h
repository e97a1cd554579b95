// The file header that stands before a BMP's bitmap header.
#pragma once

#include <cstddef>

namespace omb {

inline constexpr size_t kFileHeaderSize = 14;
inline constexpr size_t kFileSize = 2;     // bfSize
inline constexpr size_t kFilePixels = 10;  // bfOffBits

}  // namespace omb
