// What JPEG and PNG files hold besides pixels, where the codecs of Windows do not write it.
#pragma once

#include <string_view>

#include "files/codec.h"

namespace omb {

// Bytes that belong into a file, and where.
struct Insertion {
  size_t at = 0;
  std::vector<uint8_t> bytes = {};
};

// `exif` begins with kExifMark. What is empty is left out.
Insertion JpegSegments(Bytes file, Bytes exif, Bytes profile);
Insertion PngChunk(Bytes exif);

// A profile comes in pieces, each in a segment of its own that begins with this mark, the piece's
// number from 1 on and how many there are.
inline constexpr std::string_view kProfileMark("ICC_PROFILE\0", 12);
inline constexpr size_t kProfilePieceAt = kProfileMark.size() + 2;

}  // namespace omb
