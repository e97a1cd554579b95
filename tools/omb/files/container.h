// What PNG, JPEG and TIFF files say about themselves, read without a codec: enough to refuse what
// is too large or cut off before a codec sees it.
#pragma once

#include "files/codec.h"
#include "files/pixels_in.h"

namespace omb {

struct Container {
  int64_t width = 0, height = 0;
  double least_size = 0;  // bytes that the pixels of an honest file take at least
  bool gray = false;      // neither colors nor a color table
  int orientation = 1;    // TIFF's number
  Resolution resolution;
  std::string refusal;           // why the pixels would come out wrong; empty when they do not
  bool wide = false;             // samples of more than 8 bits
  bool jpeg = false;             // JPEG data in a TIFF file
  std::vector<uint8_t> profile;  // of JPEG files
  std::vector<uint8_t> exif;
  bool exif_lost = false;  // there is EXIF data, but not as a block
};

// Throw FileError where the file is cut off or makes no sense.
Container ReadPngContainer(Bytes file);
Container ReadJpegContainer(Bytes file);
Container ReadTiffContainer(Bytes file, size_t page);

}  // namespace omb
