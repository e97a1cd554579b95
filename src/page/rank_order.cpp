#include "page/rank_order.h"

#include <algorithm>
#include <cassert>

#include "core/neighbourhood.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

class RankFilter {
 public:
  RankFilter(int32_t radius, int32_t percentile)
      : size_(static_cast<size_t>(2 * radius + 1)),
        rank_((size_ * size_ - 1) * static_cast<size_t>(percentile) / 100),
        by_columns_(size_ <= 5) {}

  // The bit planes of each row, which are about as long as the row.
  FilterMemory memory() const {
    if (by_columns_) return {};
    return {.derived = {.rows = 1, .bytes = PlaneBytes(0, 3)}};
  }

  void Begin(const WindowLayout& layout) {
    layout_ = layout;
    assert(by_columns_ || PlaneBytes(layout.count, layout.step) <= layout.derived_bytes);
  }
  void Prepare(uint8_t* row) {
    if (by_columns_) return;
    const size_t reach = size_ / 2 * static_cast<size_t>(layout_.step);
    simd::Active().split_planes(row + layout_.first, reach, layout_.count, row + layout_.pitch);
  }
  bool WholeRows() const { return !by_columns_; }
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    const ptrdiff_t start = by_columns_ ? static_cast<ptrdiff_t>(first) : layout_.pitch;
    const uint8_t* from[kMostRows];
    for (size_t k = 0; k < size_; ++k) from[k] = rows[k] + start;
    if (by_columns_) {
      simd::Active().rank_of_columns(from, size_, layout_.step, rank_, count, to);
    } else {
      simd::Active().rank_of_planes(from, layout_.step, rank_, count, to);
    }
  }

 private:
  // As split_planes() writes them and rank_of_planes() reads them.
  size_t PlaneBytes(size_t count, ptrdiff_t step) const {
    return count + 7 + 16 * (size_ / 2 * static_cast<size_t>(step)) + simd::kPlanesRoom;
  }

  static constexpr size_t kMostRows = 7;
  size_t size_;
  size_t rank_;
  bool by_columns_;
  WindowLayout layout_ = {};
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
  Neighbourhood frame(rows, reach, filter.memory());
  if (!frame) return 0;
  frame.Repeat(passes, Pass{reach, Border::Keep(reach), &filter});
  return 1;
}

}  // namespace ombrilo
