#include "page/rank_order.h"

#include <algorithm>

#include "core/neighbourhood.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

class RankFilter {
 public:
  RankFilter(int32_t radius, int32_t percentile)
      : radius_(radius),
        count_((2 * radius + 1) * (2 * radius + 1)),
        rank_((count_ - 1) * percentile / 100) {}

  void Begin(const WindowLayout& layout) { step_ = layout.step; }
  void Prepare(uint8_t*) {}
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    const rows::RowFunctions& functions = rows::Active();
    if (radius_ <= 2 && rank_ == count_ / 2) {
      const uint8_t* own[5];
      for (int32_t dy = 0; dy <= 2 * radius_; ++dy) own[dy] = rows[dy] + first;
      return functions.median_of_square(own, static_cast<size_t>(2 * radius_ + 1), step_, count,
                                        to);
    }
    const uint8_t* from[kMost];
    const uint8_t** next = from;
    for (int32_t dy = 0; dy <= 2 * radius_; ++dy) {
      for (int32_t dx = -radius_; dx <= radius_; ++dx) *next++ = rows[dy] + first + dx * step_;
    }
    const auto samples = static_cast<size_t>(count_);
    if (rank_ == 0) {
      functions.min_of(from, samples, count, to);
    } else if (rank_ == count_ - 1) {
      functions.max_of(from, samples, count, to);
    } else {
      functions.rank_of(from, samples, static_cast<size_t>(rank_), count, to);
    }
  }

 private:
  static constexpr int32_t kMost = 49;
  int32_t radius_;
  int32_t count_;
  int32_t rank_;
  ptrdiff_t step_ = 0;
};

}  // namespace

int32_t RankOrder(PackedDib* image, int32_t radius, int32_t passes, int32_t percentile) {
  const auto dib = Dib::Open(image);
  if (!dib || percentile < 0 || percentile > 100) return 0;
  if (PixelRows::WithoutPlanes(*dib)) return 1;
  // Apart from 24 bits, columns are bytes: as many as the image is wide, as far as a row has them.
  const bool color = dib->bit_count() == 24;
  PixelRows rows = PixelRows::WithPlanes(*dib, static_cast<uint16_t>(dib->header().width),
                                         color ? uint16_t{24} : uint16_t{8});
  if (!color) rows.width = static_cast<int32_t>(std::min<size_t>(rows.width, rows.stride));
  if (!rows.Fits(*dib)) return 0;
  if (passes < 1 || rows.width <= 2 * radius || rows.height <= 2 * radius) return 1;

  const Reach reach = {radius, radius, radius, radius};
  Neighbourhood frame(rows, reach);
  if (!frame) return 0;
  RankFilter filter(radius, percentile);
  frame.Repeat(passes, Pass{reach, Border::Keep(reach), &filter});
  return 1;
}

}  // namespace ombrilo
