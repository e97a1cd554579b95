#include "page/rank_order.h"

#include <algorithm>

#include "core/neighbourhood.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

class RankFilter {
 public:
  RankFilter(int32_t radius, int32_t percentile)
      : size_(static_cast<size_t>(2 * radius + 1)),
        rank_((size_ * size_ - 1) * static_cast<size_t>(percentile) / 100) {}

  void Begin(const WindowLayout& layout) { step_ = layout.step; }
  void Prepare(uint8_t*) {}
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    const uint8_t* from[kMostRows];
    for (size_t k = 0; k < size_; ++k) from[k] = rows[k] + first;
    simd::Active().rank_of_squares(from, size_, step_, rank_, count, to);
  }

 private:
  static constexpr size_t kMostRows = 7;
  size_t size_;
  size_t rank_;
  ptrdiff_t step_ = 0;
};

}  // namespace

int32_t RankOrder(PackedDib* image, int32_t radius, int32_t passes, int32_t percentile) {
  const auto dib = Dib::Open(image);
  if (!dib || percentile < 0 || percentile > 100) return 0;
  if (PixelRows::WithoutPlanes(*dib)) return 1;
  // At depths other than 24 bits, columns are bytes: as many as the image is wide, or as many as a
  // row has if these are fewer.
  const bool color = dib->bit_count() == 24;
  PixelRows rows = PixelRows::WithPlanes(*dib, static_cast<uint16_t>(dib->header().width),
                                         color ? uint16_t{24} : uint16_t{8});
  if (!color) rows.width = static_cast<int32_t>(std::min<size_t>(rows.width, rows.stride));
  if (!rows.Fits(*dib)) return 0;
  if (passes < 1 || rows.width <= 2 * radius || rows.height <= 2 * radius) return 1;

  const Reach reach = {radius, radius, radius, radius};
  RankFilter filter(radius, percentile);
  Neighbourhood frame(rows, reach);
  if (!frame) return 0;
  frame.Repeat(passes, Pass{reach, Border::Keep(reach), &filter});
  return 1;
}

}  // namespace ombrilo
