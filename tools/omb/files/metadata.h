// What files hold besides pixels: EXIF blocks and ICC profiles.
#pragma once

#include <string_view>

#include "files/codec.h"

namespace omb {

inline constexpr std::string_view kExifMark("Exif\0\0", 6);

// The block of EXIF data that a file holds without the mark.
std::vector<uint8_t> ExifBlock(Bytes data);

struct ExifFacts {
  int orientation = 1;  // TIFF's number
  Resolution resolution;
};

// What an EXIF block, which begins with kExifMark, says of the picture. Never throws.
ExifFacts ReadExif(Bytes exif);

// The block for an upright picture of this size: orientation 1, no thumbnail of what the picture
// was before. Empty when it cannot be made.
std::vector<uint8_t> RenewedExif(Bytes exif, int32_t width, int32_t height);

// The profile if it is one for pixels of this kind; otherwise nothing, and a remark.
Bytes ProfileFor(const Metadata& metadata, bool gray, const Remark& remark);

// The block as it is to be written; nothing if there is none, and a remark if it is lost.
std::vector<uint8_t> ExifFor(const Metadata& metadata, int32_t width, int32_t height,
                             const Remark& remark);

inline constexpr size_t kMostExif = 65533;  // bytes that fit a segment of a JPEG file
inline constexpr char kExifRemark[] = "its EXIF data is not kept";

}  // namespace omb
