// What the samples of a TIFF file are, and how they become pixels.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "files/tiff_handle.h"

namespace omb {

enum class TiffAlpha { kNone, kPlain, kMultiplied };  // multiplied into the colors before it

struct TiffDirectory {
  uint32_t width = 0, height = 0;
  uint16_t bits = 1, samples = 1, photometric = 0, orientation = 1, sample_format = 1;
  uint16_t compression = 1;
  bool planar = false;                       // the samples of a pixel are in separate planes
  TiffAlpha alpha = TiffAlpha::kNone;        // the sample after the colors
  uint32_t tile_width = 0, tile_height = 0;  // 0 where rows come in strips
  Resolution resolution;

  bool gray() const {
    return photometric == PHOTOMETRIC_MINISWHITE || photometric == PHOTOMETRIC_MINISBLACK;
  }
  // Samples of a color; 0 for kinds that are not known.
  size_t color_samples() const;
};

// Throws FileError for what can be read but would come out wrong.
void CheckKind(const TiffDirectory& directory);

// "16 bits each of red, green, blue with alpha"
std::string StoredOf(const TiffDirectory& directory);

using TiffPalette = std::array<std::array<uint8_t, 3>, 256>;
// Throws FileError.
TiffPalette ReadPalette(TIFF* tiff, const TiffDirectory& directory, const TiffErrors& errors);

// Turns samples from libtiff into pixels of an image.
class TiffSamples {
 public:
  TiffSamples(TIFF* tiff, const TiffDirectory& directory, const TiffErrors& errors);

  // Whether samples of this kind can be used as colors directly.
  static bool Takes(const TiffDirectory& directory);
  // Bits of the image's pixels.
  static uint16_t DepthOf(const TiffDirectory& directory);
  uint16_t bit_count() const { return DepthOf(directory_); }

  // `planes` are the samples' rows: one with all of them, or one for each.
  void ToPixels(const uint8_t* const* planes, size_t pixels, uint8_t* to);

  bool transparent() const { return transparent_; }  // a pixel was
  // Whether there is a sample that is neither color nor alpha.
  bool left_out() const;

 private:
  // Stores the samples of each pixel one after the other, in 8 bits.
  void Gather(const uint8_t* const* planes, size_t pixels);
  void Compose(size_t pixels, uint8_t* to);

  const TiffDirectory& directory_;
  size_t used_;  // samples that count
  TiffPalette palette_;
  std::vector<uint8_t> samples_;
  bool transparent_ = false;
};

}  // namespace omb
