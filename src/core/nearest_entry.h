// Nearest palette entry: least squared distance over red, green and blue, the lowest index on a
// tie. This is the answer of Windows' GetNearestPaletteIndex.
//
// The search is exact and lazy. It looks at the few entries that may be nearest to some color in
// the same cell of color space; these are found when the first color falls into the cell.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/palette.h"
#include "core/palette_search.h"
#include "rows/row_functions.h"

namespace ombrilo {

class NearestEntry {
 public:
  // For about so many colors. Takes all its memory at once, up to 5.2 MiB. False when there is
  // none. Create it before the first change to an image.
  NearestEntry(const Palette& palette, uint64_t colors) : NearestEntry(colors) { Learn(palette); }
  // The same for a palette that is learned later.
  explicit NearestEntry(uint64_t colors) : search_(colors) {}
  explicit operator bool() const { return static_cast<bool>(search_); }

  void Learn(const Palette& palette);

  // Colors of `step` (3 or 4) bytes, blue, green and red first.
  void Find(const uint8_t* colors, size_t step, size_t count, uint8_t* indices) {
    simd::Active().find_by_squares(search_.lists(), colors, step, count, indices);
  }
  uint8_t Find(uint8_t blue, uint8_t green, uint8_t red) {
    const uint8_t bgr[] = {blue, green, red};
    uint8_t index;
    Find(bgr, 3, 1, &index);
    return index;
  }

 private:
  PaletteSearch<simd::SquaresLists> search_;
};

}  // namespace ombrilo
