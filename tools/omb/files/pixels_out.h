// What the writers share: an image as a codec wants to see it.
#pragma once

#include <array>
#include <cstdint>

#include "core/packed_dib.h"
#include "files/files.h"
#include "files/pixels_in.h"

namespace omb {

// The image as it is. Throws FileError for images that have no pixels or no usable header.
ombrilo::DibView ViewToWrite(const PackedDib* dib);

// The image's bytes in a block of its own. Throws std::bad_alloc.
Image CopyOf(const ombrilo::DibView& view);

// A copy in 24 bits. Channels of fewer than 8 bits are spread over the whole range, so that white
// stays white; the library's own conversion moves their bits up. Throws FileError.
Image TrueColor(const PackedDib* dib);

// An image of 1, 4, 8 or 24 bits with every color that its pixels can have. Images of 16 and 32
// bits are brought to 24 in a copy. Throws FileError.
class Picture {
 public:
  explicit Picture(const PackedDib* dib);

  int32_t width() const { return view_.width(); }
  int32_t height() const { return view_.height(); }
  uint16_t bit_count() const { return view_.bit_count(); }
  bool indexed() const { return view_.indexed(); }
  // The row `y` rows below the top of the picture.
  const uint8_t* row(int32_t y) const { return view_.row(height() - 1 - y); }
  Resolution resolution() const;

  // The depth's full number of colors, even if the table is shorter: those past it are what the
  // library takes there.
  int colors() const { return static_cast<int>(ombrilo::ColorsOfDepth(bit_count())); }
  uint8_t blue(int i) const { return bgr_[3 * static_cast<size_t>(i)]; }
  uint8_t green(int i) const { return bgr_[3 * static_cast<size_t>(i) + 1]; }
  uint8_t red(int i) const { return bgr_[3 * static_cast<size_t>(i) + 2]; }
  bool AllGray() const;
  // Whether colors are the even ramp from black to white, or from white to black.
  bool GrayRamp(bool white_first = false) const;

  // A row as gray levels, where all colors are gray.
  void GrayRow(int32_t y, uint8_t* gray) const;
  // A row as B,G,R bytes.
  void ColorRow(int32_t y, uint8_t* bgr) const;

 private:
  Image copy_;
  ombrilo::DibView view_;
  std::array<uint8_t, 3 * 256> bgr_{};
};

}  // namespace omb
