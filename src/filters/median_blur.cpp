// omb_medianblur: the median of nine pixels that form a cross, channel by channel.
#include "core/neighbourhood.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

struct MedianFilter {
  static constexpr Reach kReach = {2, 2, 2, 2};

  ptrdiff_t step = 0;

  void Begin(const WindowLayout& layout) { step = layout.step; }
  void Prepare(uint8_t*) {}
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    const uint8_t* from[5];
    for (int k = 0; k < 5; ++k) from[k] = rows[k] + first;
    simd::Active().median_of_cross(from, step, count, to);
  }
};

// The zeroed band is wider than the cross reaches. That is the contract.
constexpr Border kBorder = Border::Zero(3);

}  // namespace

}  // namespace ombrilo

void omb_medianblur(PackedDib* image) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib) return;
  if (!dib->indexed() && dib->bit_count() != 24) return ZeroPixels(*dib);
  Neighbourhood frame(*dib, MedianFilter::kReach);
  if (!frame) return;
  MedianFilter filter;
  frame.Run(Pass{MedianFilter::kReach, kBorder, &filter});
}
