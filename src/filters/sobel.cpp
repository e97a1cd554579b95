// omb_sobel: the strongest of four directional differences.
#include "core/neighbourhood.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

struct SobelFilter {
  static constexpr Reach kReach = {1, 1, 1, 1};

  ptrdiff_t step = 0;

  void Begin(const WindowLayout& layout) { step = layout.step; }
  void Prepare(uint8_t*) {}
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    const uint8_t* from[] = {rows[0] + first, rows[1] + first, rows[2] + first};
    simd::Active().sobel(from, step, count, to);
  }
};

}  // namespace

}  // namespace ombrilo

void omb_sobel(PackedDib* image) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib) return;
  if (!dib->indexed() && dib->bit_count() != 24) return ZeroPixels(*dib);
  Neighbourhood frame(*dib, SobelFilter::kReach);
  if (!frame) return;
  SobelFilter filter;
  frame.Run(Pass{SobelFilter::kReach, Border::Zero(1), &filter});
}
