// Nearest palette entry: least squared distance over red, green and blue, the lowest index on a
// tie. This is the answer of Windows' GetNearestPaletteIndex.
//
// The search is exact and lazy. It looks at the few entries that may be nearest to some color in
// the same cell of color space; these are found when the first color falls into the cell.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/buffer.h"
#include "core/palette.h"
#include "rows/row_functions.h"

namespace ombrilo {

class NearestEntry {
 public:
  // Takes all its memory at once: about 790 KiB, most of which the searches of one image never
  // touch. False when there is none. Create it before the first change to an image.
  explicit NearestEntry(const Palette& palette) : NearestEntry() { Learn(palette); }
  // The same for a palette that is learned later.
  NearestEntry() : lists_(NewZeroedBuffer<simd::SquaresLists>(1)) {}
  explicit operator bool() const { return lists_ != nullptr; }

  void Learn(const Palette& palette);

  // Colors of `step` (3 or 4) bytes, blue, green and red first.
  void Find(const uint8_t* colors, size_t step, size_t count, uint8_t* indices) {
    simd::Active().find_by_squares(lists_[0], colors, step, count, indices);
  }
  uint8_t Find(uint8_t blue, uint8_t green, uint8_t red) {
    const uint8_t bgr[] = {blue, green, red};
    uint8_t index;
    Find(bgr, 3, 1, &index);
    return index;
  }

 private:
  Buffer<simd::SquaresLists> lists_;
};

}  // namespace ombrilo
