// The file header before a BMP's bitmap header, and the fields of the largest bitmap header that
// the library does not know.
#pragma once

#include <cstddef>
#include <cstdint>

namespace omb {

inline constexpr size_t kFileHeaderSize = 14;
inline constexpr size_t kFileSize = 2;     // bfSize
inline constexpr size_t kFilePixels = 10;  // bfOffBits

// In a header of version 5.
inline constexpr size_t kVersion5Size = 124;
inline constexpr size_t kVersion5Space = 56;       // bV5CSType
inline constexpr size_t kVersion5Intent = 108;     // bV5Intent
inline constexpr size_t kVersion5ProfileAt = 112;  // bV5ProfileData, from the header's first byte
inline constexpr size_t kVersion5ProfileSize = 116;
inline constexpr uint32_t kEmbeddedProfile = 0x4D424544;  // "MBED"
inline constexpr uint32_t kPerceptual = 4;                // LCS_GM_IMAGES

}  // namespace omb
