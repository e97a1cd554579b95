// An image as a person sees it: rows from the top, colors instead of indices.
#pragma once

#include <cstdint>
#include <vector>

#include "core/packed_dib.h"
#include "core/palette.h"
#include "image.h"

namespace omb {

// A view of an image of any depth; the image outlives it.
class Picture {
 public:
  // Throws std::bad_alloc.
  explicit Picture(const PackedDib* dib);

  int width() const { return dib_.width(); }
  int height() const { return dib_.height(); }
  bool indexed() const { return dib_.indexed(); }

  // Row y, 0 at the top, as blue, green, red: 3 x width bytes.
  void ReadRow(int y, uint8_t* bgr);
  // True when every color of the table, or every pixel where there is none, is gray.
  bool IsGray();

 private:
  Image converted_;  // of 16 and 32 bits
  ombrilo::DibView dib_;
  ombrilo::Palette palette_ = {};
  std::vector<uint8_t> indices_;  // of one row
};

// Throws std::bad_alloc.
Image Copy(const PackedDib* dib);

bool SameBytes(const PackedDib* a, const PackedDib* b);

}  // namespace omb
